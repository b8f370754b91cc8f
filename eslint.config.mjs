// What ESLint looks for in the JavaScript of the service, the client for sites, the tests and the tools: rules that
// find faults, and none on layout but the width. scripts/check-js runs it.
import awaited from './scripts/checks/awaited.mjs';

// Folders (and files) that do not hold to the rules yet, nor to those of the TypeScript checker. Nothing may be added.
export const NOT_YET = [
  'agent/lib/printers/',
];

// The names that a program of each kind finds around it; ESLint knows those of the language itself.
const EVERYWHERE = [
  'AbortController', 'AbortSignal', 'Blob', 'Headers', 'Response', 'TextDecoder', 'TextEncoder', 'URL',
  'URLSearchParams', 'atob', 'btoa', 'clearInterval', 'clearTimeout', 'console', 'fetch', 'performance',
  'queueMicrotask', 'setInterval', 'setTimeout', 'structuredClone',
];
const NODE = ['Buffer', 'clearImmediate', 'process', 'setImmediate', ...EVERYWHERE];
const BROWSER = ['crypto', 'document', 'localStorage', 'location', 'navigator', 'window', ...EVERYWHERE];
const readable = (names) => Object.fromEntries(names.map((name) => [name, 'readonly']));

// A line may be longer only where it holds a word that cannot be broken: an address, or a run of data.
const WIDTH = { code: 120, ignoreUrls: true, ignorePattern: '[\'"`][\\w+/=.:;,%-]{60,}[\'"`]' };

const rules = {
  'array-callback-return': 'error',
  'constructor-super': 'error',
  'default-case-last': 'error',
  'eqeqeq': 'error',
  'for-direction': 'error',
  'getter-return': 'error',
  'local/awaited': 'error',
  'max-len': ['error', WIDTH],
  'no-async-promise-executor': 'error',
  'no-case-declarations': 'error',
  'no-class-assign': 'error',
  'no-compare-neg-zero': 'error',
  'no-cond-assign': 'error',
  'no-const-assign': 'error',
  'no-constant-binary-expression': 'error',
  'no-constant-condition': 'error',
  'no-debugger': 'error',
  'no-dupe-args': 'error',
  'no-dupe-class-members': 'error',
  'no-dupe-else-if': 'error',
  'no-dupe-keys': 'error',
  'no-duplicate-case': 'error',
  'no-duplicate-imports': 'error',
  'no-empty': 'error',
  'no-empty-character-class': 'error',
  'no-empty-pattern': 'error',
  'no-eval': 'error',
  'no-ex-assign': 'error',
  'no-extra-boolean-cast': 'error',
  'no-fallthrough': 'error',
  'no-func-assign': 'error',
  'no-implicit-coercion': ['error', { allow: ['!!'] }],
  'no-implied-eval': 'error',
  'no-import-assign': 'error',
  'no-invalid-regexp': 'error',
  'no-irregular-whitespace': 'error',
  'no-loss-of-precision': 'error',
  'no-misleading-character-class': 'error',
  'no-new-native-nonconstructor': 'error',
  'no-obj-calls': 'error',
  'no-octal': 'error',
  'no-promise-executor-return': ['error', { allowVoid: true }],
  'no-prototype-builtins': 'error',
  'no-redeclare': 'error',
  'no-regex-spaces': 'error',
  'no-return-assign': 'error',
  'no-self-assign': 'error',
  'no-self-compare': 'error',
  'no-setter-return': 'error',
  'no-shadow': ['error', { builtinGlobals: false, hoist: 'functions' }],
  'no-shadow-restricted-names': 'error',
  'no-sparse-arrays': 'error',
  'no-this-before-super': 'error',
  'no-throw-literal': 'error',
  'no-undef': 'error',
  'no-unmodified-loop-condition': 'error',
  'no-unreachable': 'error',
  'no-unreachable-loop': 'error',
  'no-unsafe-finally': 'error',
  'no-unsafe-negation': 'error',
  'no-unsafe-optional-chaining': 'error',
  'no-unused-expressions': ['error', { allowTernary: true }],
  'no-unused-labels': 'error',
  'no-unused-private-class-members': 'error',
  'no-unused-vars': [
    'error', { argsIgnorePattern: '^_', destructuredArrayIgnorePattern: '^_', ignoreRestSiblings: true },
  ],
  'no-use-before-define': ['error', { functions: false, classes: false, variables: false }],
  'no-useless-backreference': 'error',
  'no-useless-catch': 'error',
  'no-useless-escape': 'error',
  'no-useless-return': 'error',
  'no-var': 'error',
  'no-with': 'error',
  'object-shorthand': 'error',
  'prefer-const': ['error', { destructuring: 'all' }],
  'prefer-promise-reject-errors': 'error',
  'radix': 'error',
  'require-yield': 'error',
  'symbol-description': 'error',
  'use-isnan': 'error',
  'valid-typeof': 'error',
};

export default [
  { plugins: { local: { rules: { awaited } } } },
  { ignores: ['build/', 'node_modules/', 'resources/guide/', ...NOT_YET] },
  {
    files: ['**/*.mjs', '**/*.js'],
    linterOptions: { reportUnusedDisableDirectives: 'error' },
    languageOptions: { ecmaVersion: 2022, sourceType: 'module', globals: readable(NODE) },
    rules,
  },
  {
    files: ['agent/**', 'scripts/**'],
    rules: { 'max-lines': ['error', { max: 250 }], 'require-atomic-updates': 'error' },
  },
  {
    files: ['scripts/make-release'],
    languageOptions: { sourceType: 'commonjs', globals: readable([...NODE, 'require', '__dirname']) },
    rules,
  },
  { files: ['sdk/**'], languageOptions: { globals: readable(BROWSER) } },
];
