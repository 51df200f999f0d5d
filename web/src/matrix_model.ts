// A group as a table: its spines by its lines, and how many cables each two have.

import type { Model } from './model'

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

export function matrixOf(model: Model, index: number): Matrix {
  const { spines, lines } = model.groups[index]
  const matrix: Matrix = {
    group: index,
    spines,
    lines,
    cells: Array.from({ length: spines.length * lines.length }, () => ({ cables: 0, missing: -1 })),
    spineLinks: invalidAt(model, index, spines),
    lineLinks: invalidAt(model, index, lines),
    spineSums: spines.map(() => 0),
    lineSums: lines.map(() => 0),
  }
  countCables(model, matrix)
  markMissing(model, matrix)
  return matrix
}

/** The number that most have. */
export function usual(numbers: number[]): number {
  const counts = new Map<number, number>()
  for (const one of numbers) counts.set(one, (counts.get(one) ?? 0) + 1)
  return [...counts].reduce((best, one) => (one[1] > best[1] ? one : best), [0, 0])[0]
}
