// As much of node as the tests use, so that its types need not be installed.

declare module 'node:test' {
  export default function test(name: string, body: () => void): void
}

declare module 'node:assert/strict' {
  export function equal(actual: unknown, expected: unknown): void
  export function deepEqual(actual: unknown, expected: unknown): void
}
