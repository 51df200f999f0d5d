// A group as a table: its spines by its lines, and how many cables each two have.

import type { UnevenLinks } from './data'
import type { Model } from './model'
import { headNames, nameOf } from './words'

export interface Cell {
  cables: number
  /** The finding that misses a cable here; -1: none. */
  missing: number
}

export interface Matrix {
  group: number
  spines: number[]
  lines: number[]
  cells: Cell[]
  /** Findings of invalid links at each spine, at each line. */
  spineLinks: number[][]
  lineLinks: number[][]
  /** Cables of each spine and line inside the group. */
  spineSums: number[]
  lineSums: number[]
  /** What they should be. */
  spineSum: number
  lineSum: number
  /** Names at the rows and columns. */
  spineHeads: string[]
  lineHeads: string[]
  /** Switches with another number of links than most of the group: the worst level. */
  uneven: Map<number, number>
}

function invalidAt(model: Model, group: number, switches: number[]): number[][] {
  return switches.map((index) =>
    model.switches[index].findings.filter((finding) => {
      const { raw, groups } = model.findings[finding]
      return raw.kind === 'invalid-link' && groups.includes(group)
    }),
  )
}

function countCables(model: Model, matrix: Matrix): void {
  const column = new Map(matrix.lines.map((index, at) => [index, at]))
  matrix.spines.forEach((spine, row) => {
    for (const cable of model.cablesOf(spine)) {
      const at = column.get(cable.peer)
      if (at === undefined || model.invalidBy[cable.index] >= 0) continue
      matrix.cells[row * matrix.lines.length + at].cables++
      matrix.spineSums[row]++
      matrix.lineSums[at]++
    }
  })
}

function markMissing(model: Model, matrix: Matrix): void {
  for (const index of model.groups[matrix.group].findings) {
    const { raw } = model.findings[index]
    if (raw.kind !== 'missing-link') continue
    const row = matrix.spines.indexOf(model.switchAt(raw.spine))
    const column = matrix.lines.indexOf(model.switchAt(raw.line))
    if (row >= 0 && column >= 0) matrix.cells[row * matrix.lines.length + column].missing = index
  }
}

/** Of the group's findings that count links. */
function unevenIn(model: Model, index: number): UnevenLinks[] {
  return model.groups[index].findings
    .map((finding) => model.findings[finding].raw)
    .filter((raw) => raw.kind === 'uneven-links')
}

function markUneven(model: Model, { group, uneven }: Matrix): void {
  for (const { counts, level } of unevenIn(model, group))
    for (const guid of counts.flatMap((count) => count.switches)) {
      const index = model.switchAt(guid)
      uneven.set(index, Math.max(level, uneven.get(index) ?? 0))
    }
}

/** Only cables inside the group: down from its spines, up from its lines. */
function expectSums(model: Model, matrix: Matrix): void {
  const expected = (set: UnevenLinks['set'], direction: UnevenLinks['direction']) =>
    unevenIn(model, matrix.group).find((raw) => raw.set === set && raw.direction === direction)
      ?.expected
  matrix.spineSum = usual(matrix.spineSums, expected('spines', 'down'))
  matrix.lineSum = usual(matrix.lineSums, expected('lines', 'up'))
}

/** Letters of a name at a row or column. */
const longestHead = 20
const longestName = 200

export function matrixOf(model: Model, index: number): Matrix {
  const { spines, lines } = model.groups[index]
  const heads = (switches: number[]) =>
    headNames(
      switches.map((one) => nameOf(model.switches[one], longestName)),
      longestHead,
    )
  const matrix: Matrix = {
    group: index,
    spines,
    lines,
    cells: Array.from({ length: spines.length * lines.length }, () => ({ cables: 0, missing: -1 })),
    spineLinks: invalidAt(model, index, spines),
    lineLinks: invalidAt(model, index, lines),
    spineSums: spines.map(() => 0),
    lineSums: lines.map(() => 0),
    spineSum: 0,
    lineSum: 0,
    spineHeads: heads(spines),
    lineHeads: heads(lines),
    uneven: new Map(),
  }
  countCables(model, matrix)
  expectSums(model, matrix)
  markMissing(model, matrix)
  markUneven(model, matrix)
  return matrix
}

/**
 * The number that is expected, or that most have; the largest of several, as cables go missing more
 * often than they appear. With cables from elsewhere no switch may have what is expected.
 */
export function usual(numbers: number[], expected?: number): number {
  if (expected !== undefined && numbers.includes(expected)) return expected
  const counts = new Map<number, number>()
  for (const one of numbers) counts.set(one, (counts.get(one) ?? 0) + 1)
  const most = Math.max(0, ...counts.values())
  return Math.max(0, ...[...counts].filter((one) => one[1] === most).map((one) => one[0]))
}
