// Where everything of the tree stands.
//
// Each rank is a row. A row is divided into blocks: the spines of one group; in the last row, the
// lines of one neighborhood. So every switch stands once, and spines and leaves of a neighborhood
// stand above each other in one box. The lines of a connectivity group are spines of groups below
// and stand there; bundles of cables lead to them.
//
// Blocks of wide rows are folded: their switches stand in several short rows. The group that is
// opened has its switches side by side, which leaves room for single cables.

import type { Model, Switch } from './model'

export interface Block {
  index: number
  rank: number
  /** -1: switches of no group. */
  group: number
  switches: number[]
  folded: boolean
  x: number
  y: number
  width: number
  height: number
}

export interface Bundle {
  upper: number
  lower: number
  cables: number
}

export interface Layout {
  blocks: Block[]
  /** Block of each switch; -1: not drawn. */
  blockOf: Int32Array
  /** Middle of each switch. */
  x: Float64Array
  y: Float64Array
  bundles: Bundle[]
  width: number
  height: number
  /** All cables can be drawn singly. */
  small: boolean
}

export const pitch = { folded: 10, open: 16 }
const inset = 6
const between = 14
const smallRow = 72
const smallCables = 3000

function blockGroup(one: Switch, levels: number): number {
  return one.rank === levels - 1 && levels > 1 ? one.asLine : one.asSpine
}

function blocksOfRank(model: Model, rank: number): Block[] {
  const byGroup = new Map<number, number[]>()
  for (const guid of model.result.ranks[rank]) {
    const index = model.switchAt(guid)
    if (index < 0) continue
    const group = blockGroup(model.switches[index], model.levels)
    byGroup.set(group, [...(byGroup.get(group) ?? []), index])
  }
  const order = [...byGroup].sort(([a], [b]) => (a < 0 ? 1 : b < 0 ? -1 : a - b))
  return order.map(([group, switches]) => ({
    index: -1,
    rank,
    group,
    switches,
    folded: false,
    x: 0,
    y: 0,
    width: 0,
    height: 0,
  }))
}

/** Everything of the layout that stays when a group is opened. */
export interface Frame {
  rows: Block[][]
  blocks: Block[]
  blockOf: Int32Array
  bundles: Bundle[]
  small: boolean
}

function bundlesOf(model: Model, blockOf: Int32Array, blocks: Block[]): Bundle[] {
  const bundles = new Map<number, Bundle>()
  const { cables } = model
  for (let at = 0; at < cables.length; at += 4) {
    const [a, b] = [blockOf[cables[at]], blockOf[cables[at + 2]]]
    if (a < 0 || b < 0 || blocks[a].rank === blocks[b].rank || model.invalidBy[at >> 2] >= 0)
      continue
    const [upper, lower] = blocks[a].rank < blocks[b].rank ? [a, b] : [b, a]
    const key = upper * blocks.length + lower
    const bundle = bundles.get(key)
    if (bundle) bundle.cables++
    else bundles.set(key, { upper, lower, cables: 1 })
  }
  return [...bundles.values()]
}

/** Blocks below one another are drawn near one another: by the block that most cables lead up to. */
function sortRow(row: Block[], above: Block[], bundles: Bundle[]): void {
  const place = new Map(above.map((block, at) => [block.index, at]))
  const best = new Map<number, Bundle>()
  for (const bundle of bundles) {
    if (!place.has(bundle.upper)) continue
    const known = best.get(bundle.lower)
    if (!known || bundle.cables > known.cables) best.set(bundle.lower, bundle)
  }
  const key = (block: Block) => place.get(best.get(block.index)?.upper ?? -1) ?? above.length
  const keys = new Map(row.map((block) => [block, key(block)]))
  row.sort((a, b) => (keys.get(a) ?? 0) - (keys.get(b) ?? 0))
}

export function frameOf(model: Model): Frame {
  const rows = model.result.ranks.map((_, rank) => blocksOfRank(model, rank))
  const blocks = rows.flat()
  const blockOf = new Int32Array(model.switches.length).fill(-1)
  blocks.forEach((block, index) => {
    block.index = index
    for (const one of block.switches) blockOf[one] = index
  })
  const bundles = bundlesOf(model, blockOf, blocks)
  for (let rank = 1; rank < rows.length; rank++) sortRow(rows[rank], rows[rank - 1], bundles)
  const widest = Math.max(0, ...model.result.ranks.map((rank) => rank.length))
  const small = widest <= smallRow && model.cables.length / 4 <= smallCables
  return { rows, blocks, blockOf, bundles, small }
}

/** Folded blocks are higher than wide: rows have many. */
function columnsOf(block: Block): number {
  return block.folded ? Math.ceil(Math.sqrt(block.switches.length / 2)) : block.switches.length
}

function sizeOf(block: Block): void {
  const step = block.folded ? pitch.folded : pitch.open
  const columns = Math.max(1, columnsOf(block))
  block.width = columns * step + 2 * inset
  block.height = Math.ceil(block.switches.length / columns) * step + 2 * inset
}

/** The columns of the last two rows: both blocks of a neighborhood share one. */
function columnsBelow(rows: Block[][]): Block[][] {
  const [upper, lower] = rows.slice(-2)
  const columns = upper.map((block) => [block])
  const at = new Map(upper.map((block, index) => [block.group, index]))
  for (const block of lower) {
    const index = block.group >= 0 ? at.get(block.group) : undefined
    if (index === undefined) columns.push([block])
    else columns[index].push(block)
  }
  return columns
}

/** Puts columns of blocks side by side, spread over a width. Returns the width that they need. */
function placeColumns(columns: Block[][], width: number): number {
  const widths = columns.map((column) => Math.max(...column.map((block) => block.width)))
  const needed = widths.reduce((sum, one) => sum + one, 0) + between * (columns.length - 1)
  const spare = Math.max(0, width - needed) / columns.length
  let x = spare / 2
  columns.forEach((column, index) => {
    for (const block of column) block.x = x + (widths[index] - block.width) / 2
    x += widths[index] + between + spare
  })
  return needed
}

function placeRows(rows: Block[][], width: number, aspect: number): number {
  const heights = rows.map((row) => Math.max(...row.map((block) => block.height)))
  const gaps = Math.max(1, rows.length - 1)
  const full = heights.reduce((sum, one) => sum + one, 0)
  const gap = Math.min(Math.max((width / aspect - full) / gaps, 70), width * 0.4 + 70)
  let y = 0
  rows.forEach((row, index) => {
    for (const block of row) block.y = y + (heights[index] - block.height) / 2
    y += heights[index] + gap
  })
  return y - gap
}

function placeSwitches(block: Block, layout: Layout): void {
  const step = block.folded ? pitch.folded : pitch.open
  const columns = Math.max(1, columnsOf(block))
  block.switches.forEach((one, at) => {
    layout.x[one] = block.x + inset + ((at % columns) + 0.5) * step
    layout.y[one] = block.y + inset + (Math.floor(at / columns) + 0.5) * step
  })
}

/** The switches of a group stand side by side, whichever blocks they are in. */
function isOpen(block: Block, model: Model, group: number): boolean {
  if (group < 0 || block.group < 0) return false
  return block.group === group && block.rank >= model.groups[group].rank
}

export function layoutOf(model: Model, frame: Frame, opened: number, aspect: number): Layout {
  const { rows, blocks, blockOf, bundles, small } = frame
  for (const block of blocks) {
    block.folded = !small && !isOpen(block, model, opened)
    sizeOf(block)
  }
  const layout: Layout = {
    blocks,
    blockOf,
    bundles,
    small,
    x: new Float64Array(model.switches.length),
    y: new Float64Array(model.switches.length),
    width: 0,
    height: 0,
  }
  if (rows.length === 0) return layout
  const stacks = rows.length > 1 ? [...rows.slice(0, -2).map((row) => row.map((one) => [one])), columnsBelow(rows)] : rows.map((row) => row.map((one) => [one]))
  layout.width = Math.max(...stacks.map((columns) => placeColumns(columns, 0)))
  for (const columns of stacks) placeColumns(columns, layout.width)
  layout.height = placeRows(rows, layout.width, aspect)
  for (const block of blocks) placeSwitches(block, layout)
  return layout
}
