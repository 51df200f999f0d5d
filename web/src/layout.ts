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
  /** Width by height when it is folded. */
  shape: number
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
  /** From switch to switch in blocks that are not folded. */
  pitch: number
  /** Between two rows. */
  gap: number
  /** All cables can be drawn singly. */
  small: boolean
}

const pitch = { folded: 10, open: 16, most: 56 }
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
    const known = byGroup.get(group)
    if (known) known.push(index)
    else byGroup.set(group, [index])
  }
  const order = [...byGroup].sort(([a], [b]) => (a < 0 ? 1 : b < 0 ? -1 : a - b))
  return order.map(([group, switches]) => ({
    index: -1,
    rank,
    group,
    switches,
    folded: false,
    shape: Math.max(0.5, 8 / byGroup.size),
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

/**
 * Blocks below one another are drawn near one another: by the first of those above that many
 * cables lead to; a cable that is missing must not change it.
 */
function sortRow(row: Block[], above: Block[], bundles: Bundle[]): void {
  const place = new Map(above.map((block, at) => [block.index, at]))
  const most = new Map<number, number>()
  for (const { lower, cables } of bundles) most.set(lower, Math.max(most.get(lower) ?? 0, cables))
  const keys = new Map<number, number>()
  for (const { upper, lower, cables } of bundles)
    if (2 * cables > (most.get(lower) ?? 0))
      keys.set(lower, Math.min(keys.get(lower) ?? Infinity, place.get(upper) ?? Infinity))
  const key = (block: Block) => keys.get(block.index) ?? above.length
  row.sort((a, b) => key(a) - key(b))
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

/** Folded blocks are higher than wide where a row has many. */
function columnsOf(block: Block): number {
  const count = block.switches.length
  return block.folded ? Math.ceil(Math.sqrt(count * block.shape)) : count
}

/** From switch to switch. */
export function stepOf(layout: Layout, block: Block): number {
  return block.folded ? pitch.folded : layout.pitch
}

function sizeOf(layout: Layout, block: Block): void {
  const step = stepOf(layout, block)
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

function placeRows(rows: Block[][], layout: Layout, aspect: number): void {
  const { width } = layout
  const heights = rows.map((row) => Math.max(...row.map((block) => block.height)))
  const gaps = Math.max(1, rows.length - 1)
  const full = heights.reduce((sum, one) => sum + one, 0)
  layout.gap = Math.min(Math.max((width / aspect - full) / gaps, 70), width * 0.4 + 70)
  let y = 0
  rows.forEach((row, index) => {
    for (const block of row) block.y = y + (heights[index] - block.height) / 2
    y += heights[index] + layout.gap
  })
  layout.height = y - layout.gap
}

function placeSwitches(block: Block, layout: Layout): void {
  const step = stepOf(layout, block)
  const columns = Math.max(1, columnsOf(block))
  block.switches.forEach((one, at) => {
    layout.x[one] = block.x + inset + ((at % columns) + 0.5) * step
    layout.y[one] = block.y + inset + (Math.floor(at / columns) + 0.5) * step
  })
}

/** Rows of columns. The last two rows are one. */
function stacksOf(rows: Block[][]): Block[][][] {
  const singly = (row: Block[]) => row.map((block) => [block])
  return rows.length < 2 ? rows.map(singly) : [...rows.slice(0, -2).map(singly), columnsBelow(rows)]
}

function widthOf(stacks: Block[][][]): number {
  return Math.max(...stacks.map((columns) => placeColumns(columns, 0)))
}

/** An opened group becomes about as wide as it is high, so that its cables can be told apart. */
function open(layout: Layout, model: Model, opened: number, height: number): void {
  const own = layout.blocks.filter((block) => isOpen(block, model, opened))
  const longest = Math.max(1, ...own.map((block) => block.switches.length))
  layout.pitch = Math.min(pitch.most, Math.max(pitch.open, (1.3 * height) / longest))
  for (const block of own) {
    block.folded = false
    sizeOf(layout, block)
  }
}

/** The switches of a group stand side by side, whichever blocks they are in. */
function isOpen(block: Block, model: Model, group: number): boolean {
  if (group < 0 || block.group < 0) return false
  return block.group === group && block.rank >= model.groups[group].rank
}

export function layoutOf(model: Model, frame: Frame, opened: number, aspect: number): Layout {
  const { rows, blocks, blockOf, bundles, small } = frame
  const layout: Layout = {
    blocks,
    blockOf,
    bundles,
    small,
    x: new Float64Array(model.switches.length),
    y: new Float64Array(model.switches.length),
    width: 0,
    height: 0,
    pitch: pitch.open,
    gap: 0,
  }
  if (rows.length === 0) return layout
  const stacks = stacksOf(rows)
  for (const block of blocks) {
    block.folded = !small
    sizeOf(layout, block)
  }
  if (!small) open(layout, model, opened, widthOf(stacks) / aspect / rows.length)
  layout.width = widthOf(stacks)
  for (const columns of stacks) placeColumns(columns, layout.width)
  placeRows(rows, layout, aspect)
  for (const block of blocks) placeSwitches(block, layout)
  return layout
}
