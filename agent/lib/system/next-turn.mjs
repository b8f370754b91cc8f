/** Lets everything else that waits for this process have its turn. */
export const nextTurn = () => new Promise((resolve) => { setImmediate(resolve); });
