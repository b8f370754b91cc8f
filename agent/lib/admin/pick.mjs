/** The named keys of a record that have a value. */
export function pick(record, keys) {
  return Object.fromEntries(keys.filter((key) => record[key] !== undefined).map((key) => [key, record[key]]));
}
