// Makes built/report.html: the page's text, style and code in one file, which loads nothing.
//
// The file stands in the repository, for whoever builds fabscope needs no npm. So it must be
// the same wherever it is made; `--check` fails when it is not what the sources give.
import { build } from 'esbuild'
import { createHash } from 'node:crypto'
import { mkdirSync, readFileSync, writeFileSync } from 'node:fs'

const place = '@FABSCOPE_DATA@'
const target = new URL('built/report.html', import.meta.url)

const read = (name) => readFileSync(new URL(`src/${name}`, import.meta.url), 'utf8')

/** What a browser with a content security policy compares an element's text with. */
const hashOf = (text) => `'sha256-${createHash('sha256').update(text).digest('base64')}'`

async function bundle(entry, options) {
  const result = await build({
    entryPoints: [new URL(`src/${entry}`, import.meta.url).pathname],
    bundle: true,
    minify: true,
    charset: 'utf8',
    write: false,
    ...options,
  })
  return result.outputFiles[0].text.trim()
}

/** The licences of what is bundled, each once: their authors ask for that. */
function licences() {
  const names = [
    'color',
    'dispatch',
    'drag',
    'ease',
    'interpolate',
    'selection',
    'timer',
    'transition',
    'zoom',
  ]
  const texts = new Map()
  for (const name of names.map((part) => `d3-${part}`)) {
    const url = new URL(`node_modules/${name}/LICENSE`, import.meta.url)
    const text = readFileSync(url, 'utf8').trim()
    texts.set(text, [...(texts.get(text) ?? []), name])
  }
  return [...texts].map(([text, owners]) => `${owners.join(', ')}\n\n${text}`).join('\n\n')
}

/** Text put between the tags must not end them. */
function checked(text) {
  if (/<\/(script|style)|<!--/i.test(text)) throw new Error('code or style would end its element')
  return text
}

async function page() {
  const script = checked(
    await bundle('main.ts', { format: 'iife', target: 'es2020', legalComments: 'inline' }),
  )
  const style = checked(await bundle('style/page.css', {}))
  const dark = checked(await bundle('style/dark.css', {}))
  const parts = {
    POLICY:
      `default-src 'none'; script-src ${hashOf(script)}; style-src ${hashOf(style)} ${hashOf(dark)}; ` +
      `img-src data:; base-uri 'none'; form-action 'none'`,
    LICENCES: licences(),
    STYLE: style,
    DARK: dark,
    SCRIPT: script,
  }
  const html = read('page.html').replace(/@([A-Z]+)@/g, (whole, name) => parts[name] ?? whole)
  if (html.split(place).length !== 2) throw new Error(`${place} must stand in the page once`)
  return html
}

const html = await page()
if (process.argv.includes('--check')) {
  if (readFileSync(target, 'utf8') !== html) {
    console.error('built/report.html is not what the sources give: npm run build')
    process.exit(1)
  }
} else {
  mkdirSync(new URL('.', target), { recursive: true })
  writeFileSync(target, html)
  console.log(`built/report.html: ${Buffer.byteLength(html)} bytes`)
}
