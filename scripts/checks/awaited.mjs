// A promise that nobody waits for swallows what went wrong. Without types the rule knows the functions and methods that
// this file itself declares as async: a statement that only calls one must await it or say `void`.

const isFunction = (node) => node?.type.endsWith('FunctionExpression') || node?.type === 'FunctionDeclaration';

/** The function that a name stands for in this file, if it is declared once and never assigned again. */
function declared(name, scope) {
  for (let each = scope; each; each = each.upper) {
    const variable = each.set.get(name);
    if (!variable) continue;
    const [definition] = variable.defs;
    // Of a parameter, the node is the function that has it.
    if (definition?.type === 'Parameter') return null;
    const value = definition?.type === 'Variable' ? definition.node.init : definition?.node;
    return isFunction(value) || value?.type === 'ArrowFunctionExpression' ? value : null;
  }
  return null;
}

/** The method of the class around a node that `this.name` stands for. */
function method(property, node) {
  let body = node.parent;
  while (body && body.type !== 'ClassBody') body = body.parent;
  const isIt = ({ key, static: ofClass }) => !ofClass && key?.type === property.type && key.name === property.name;
  return body?.body.find(isIt)?.value ?? null;
}

export default {
  meta: {
    type: 'problem',
    messages: { lost: 'The promise of this call is lost: await it, or say `void` where nobody needs its end.' },
  },
  create(context) {
    return {
      ExpressionStatement(node) {
        const call = node.expression;
        if (call.type !== 'CallExpression') return;
        const { callee } = call;
        let target = null;
        if (callee.type === 'Identifier') {
          target = declared(callee.name, context.sourceCode.getScope(node));
        } else if (callee.type === 'MemberExpression' && callee.object.type === 'ThisExpression') {
          target = method(callee.property, node);
        }
        if (target?.async) context.report({ node, messageId: 'lost' });
      },
    };
  },
};
