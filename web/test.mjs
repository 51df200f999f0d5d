// Runs tests/*.test.ts: each bundled like the page, then all by node's own test runner. Says nothing
// when all pass.
import { build } from 'esbuild'
import { spawnSync } from 'node:child_process'
import { mkdtempSync, readdirSync, rmSync } from 'node:fs'
import { tmpdir } from 'node:os'
import { join } from 'node:path'
import { fileURLToPath } from 'node:url'

const tests = fileURLToPath(new URL('tests', import.meta.url))
const folder = mkdtempSync(join(tmpdir(), 'fabscope-page-'))
try {
  const names = readdirSync(tests).filter((name) => name.endsWith('.test.ts'))
  await build({
    entryPoints: names.map((name) => join(tests, name)),
    bundle: true,
    platform: 'node',
    format: 'esm',
    outdir: folder,
    outExtension: { '.js': '.mjs' },
    sourcemap: 'inline',
  })
  const bundles = names.map((name) => join(folder, name.replace(/ts$/, 'mjs')))
  const run = spawnSync(process.execPath, ['--enable-source-maps', '--test', ...bundles], {
    encoding: 'utf8',
  })
  if (run.status !== 0) console.error(run.stdout + run.stderr)
  process.exitCode = run.status ?? 1
} finally {
  rmSync(folder, { recursive: true })
}
