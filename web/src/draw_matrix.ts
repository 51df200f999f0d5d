// Draws a matrix as far as it is in sight; the names of rows and columns stay when it is scrolled.

import type { Matrix } from './matrix_model'
import type { Model } from './model'
import { chosenIn, type State } from './state'
import { font, type Palette } from './theme'

/** Sizes in pixels: of a cell, and of the heads for names. */
export interface Grid {
  cell: number
  left: number
  top: number
  /** How far it is scrolled. */
  x: number
  y: number
  width: number
  height: number
}

/** Row -1 or column -1: none. Behind the last line come invalid links and the sum, likewise below. */
export interface Place {
  row: number
  column: number
}

export interface MatrixDrawing {
  ctx: CanvasRenderingContext2D
  model: Model
  matrix: Matrix
  grid: Grid
  state: State
  colours: Palette
  cursor: Place
}

/** Room between the cells and the two columns behind them. */
export const gutter = 10

export function columnX(matrix: Matrix, grid: Grid, column: number): number {
  const behind = column >= matrix.lines.length ? gutter : 0
  return grid.left + column * grid.cell + behind - grid.x
}

export function rowY(matrix: Matrix, grid: Grid, row: number): number {
  const behind = row >= matrix.spines.length ? gutter : 0
  return grid.top + row * grid.cell + behind - grid.y
}

export function wholeSize(matrix: Matrix, grid: Grid): [width: number, height: number] {
  return [
    grid.left + (matrix.lines.length + 2) * grid.cell + gutter + 8,
    grid.top + (matrix.spines.length + 2) * grid.cell + gutter + 8,
  ]
}

function range(scroll: number, size: number, cell: number, count: number): [number, number] {
  const first = Math.max(0, Math.floor(scroll / cell) - 1)
  return [first, Math.min(count, first + Math.ceil(size / cell) + 3)]
}

function drawMissing(drawing: MatrixDrawing, x: number, y: number): void {
  const { ctx, grid, colours } = drawing
  const size = grid.cell - 2
  ctx.strokeStyle = colours.error
  ctx.lineWidth = grid.cell > 10 ? 2 : 1.2
  ctx.setLineDash(grid.cell > 15 ? [4, 2.5] : [])
  ctx.strokeRect(x + 2, y + 2, size - 2, size - 2)
  ctx.setLineDash([])
  if (grid.cell < 7) {
    ctx.fillStyle = colours.error
    ctx.fillRect(x, y, grid.cell, grid.cell)
    return
  }
  const [from, to] = [grid.cell * 0.32, grid.cell * 0.68]
  ctx.beginPath()
  ctx.moveTo(x + from, y + from)
  ctx.lineTo(x + to, y + to)
  ctx.moveTo(x + to, y + from)
  ctx.lineTo(x + from, y + to)
  ctx.stroke()
}

function drawCell(drawing: MatrixDrawing, row: number, column: number, most: number): void {
  const { ctx, matrix, grid, colours } = drawing
  const cell = matrix.cells[row * matrix.lines.length + column]
  const [x, y] = [columnX(matrix, grid, column), rowY(matrix, grid, row)]
  const space = grid.cell > 10 ? 1 : 0.5
  if (cell.missing >= 0) drawMissing(drawing, x, y)
  else if (cell.cables > 0) {
    ctx.fillStyle = colours.cell
    ctx.beginPath()
    ctx.roundRect(
      x + space,
      y + space,
      grid.cell - 2 * space,
      grid.cell - 2 * space,
      grid.cell > 10 ? 3 : 0,
    )
    ctx.fill()
    if (most > 1 && grid.cell >= 14) text(drawing, String(cell.cables), x, y, colours.ink, 500)
  }
}

/** A text in the middle of a cell. */
function text(
  drawing: MatrixDrawing,
  words: string,
  x: number,
  y: number,
  colour: string,
  weight: number,
): void {
  const { ctx, grid } = drawing
  ctx.font = `${weight} ${Math.min(14, grid.cell * 0.55)}px ${font}`
  ctx.textAlign = 'center'
  ctx.textBaseline = 'middle'
  ctx.fillStyle = colour
  ctx.fillText(words, x + grid.cell / 2, y + grid.cell / 2 + 0.5)
}

function drawInvalid(drawing: MatrixDrawing, findings: number[], x: number, y: number): void {
  const { ctx, model, grid, colours } = drawing
  if (findings.length === 0) return
  const level = Math.max(...findings.map((index) => model.findings[index].raw.level))
  const [middle, r] = [grid.cell / 2, grid.cell * 0.46]
  ctx.fillStyle = level === 3 ? colours.error : colours.warning
  ctx.beginPath()
  ctx.moveTo(x + middle, y + middle - r)
  ctx.lineTo(x + middle + r, y + middle)
  ctx.lineTo(x + middle, y + middle + r)
  ctx.lineTo(x + middle - r, y + middle)
  ctx.closePath()
  ctx.fill()
  if (grid.cell >= 14) text(drawing, String(findings.length), x, y, colours.surface, 700)
}

function drawSum(
  drawing: MatrixDrawing,
  sum: number,
  expected: number,
  x: number,
  y: number,
): void {
  const { ctx, grid, colours } = drawing
  const odd = sum !== expected
  if (grid.cell < 14) {
    // Too small for a number, but not for a mark.
    ctx.fillStyle = colours.error
    if (odd) ctx.fillRect(x + 1, y + 1, grid.cell - 2, grid.cell - 2)
    return
  }
  text(drawing, String(sum), x, y, odd ? colours.error : colours.soft, odd ? 700 : 400)
}

function drawCells(drawing: MatrixDrawing): void {
  const { matrix, grid } = drawing
  const most = matrix.cells.reduce((max, cell) => Math.max(max, cell.cables), 0)
  const [firstRow, lastRow] = range(grid.y, grid.height - grid.top, grid.cell, matrix.spines.length)
  const [first, last] = range(grid.x, grid.width - grid.left, grid.cell, matrix.lines.length)
  for (let row = firstRow; row < lastRow; row++) {
    const y = rowY(matrix, grid, row)
    for (let column = first; column < last; column++) drawCell(drawing, row, column, most)
    drawInvalid(drawing, matrix.spineLinks[row], columnX(matrix, grid, matrix.lines.length), y)
    drawSum(
      drawing,
      matrix.spineSums[row],
      matrix.spineSum,
      columnX(matrix, grid, matrix.lines.length + 1),
      y,
    )
  }
  for (let column = first; column < last; column++) {
    const x = columnX(matrix, grid, column)
    drawInvalid(drawing, matrix.lineLinks[column], x, rowY(matrix, grid, matrix.spines.length))
    drawSum(
      drawing,
      matrix.lineSums[column],
      matrix.lineSum,
      x,
      rowY(matrix, grid, matrix.spines.length + 1),
    )
  }
}

/** The row and the column that the cursor, or else the chosen finding, is in. */
function marked(drawing: MatrixDrawing): Place[] {
  const { model, matrix, state, cursor } = drawing
  const places: Place[] = []
  const chosen = chosenIn(model, state)
  for (const index of chosen.length > 0 ? chosen : [state.switch]) {
    const [row, column] = [matrix.spines.indexOf(index), matrix.lines.indexOf(index)]
    if (row >= 0 || column >= 0) places.push({ row, column })
  }
  return cursor.row >= 0 || cursor.column >= 0 ? [...places, cursor] : places
}

function drawBands(drawing: MatrixDrawing): void {
  const { ctx, matrix, grid, colours } = drawing
  ctx.fillStyle = colours.accent
  ctx.globalAlpha = 0.13
  const [width, height] = wholeSize(matrix, grid)
  for (const { row, column } of marked(drawing)) {
    if (row >= 0) ctx.fillRect(0, rowY(matrix, grid, row), width, grid.cell)
    if (column >= 0) ctx.fillRect(columnX(matrix, grid, column), 0, grid.cell, height)
  }
  ctx.globalAlpha = 1
}

function drawCursor({ ctx, matrix, grid, colours, cursor }: MatrixDrawing): void {
  if (cursor.row < 0 || cursor.column < 0) return
  ctx.strokeStyle = colours.accent
  ctx.lineWidth = 2
  ctx.strokeRect(
    columnX(matrix, grid, cursor.column),
    rowY(matrix, grid, cursor.row),
    grid.cell,
    grid.cell,
  )
}

function headFont(drawing: MatrixDrawing, isMarked: boolean, index?: number): void {
  const { ctx, matrix, grid, colours } = drawing
  const level = index === undefined ? 0 : (matrix.uneven.get(index) ?? 0)
  ctx.font = `${isMarked ? 700 : 400} ${Math.min(13, Math.max(9, grid.cell - 3))}px ${font}`
  ctx.fillStyle = isMarked ? colours.ink : colours.soft
  if (level > 0) ctx.fillStyle = level === 3 ? colours.error : colours.warning
}

/** Where cells are smaller than letters, only some have their name. */
function nameStep(cell: number): number {
  return Math.max(1, Math.ceil(11 / cell))
}

function rowNames(drawing: MatrixDrawing, bands: Set<number>): void {
  const { ctx, matrix, grid, colours } = drawing
  ctx.fillStyle = colours.surface
  ctx.fillRect(0, 0, grid.left, grid.height)
  const [first, last] = range(grid.y, grid.height - grid.top, grid.cell, matrix.spines.length)
  ctx.textAlign = 'right'
  ctx.textBaseline = 'middle'
  const step = nameStep(grid.cell)
  const name = (row: number, words: string) => {
    headFont(drawing, bands.has(row), matrix.spines[row])
    ctx.fillText(words, grid.left - 6, rowY(matrix, grid, row) + grid.cell / 2, grid.left - 12)
  }
  for (let row = first; row < last; row++)
    if (row % step === 0 || bands.has(row)) name(row, matrix.spineHeads[row])
  name(matrix.spines.length, 'invalid')
  name(matrix.spines.length + 1, 'cables')
}

function columnNames(drawing: MatrixDrawing, bands: Set<number>): void {
  const { ctx, matrix, grid, colours } = drawing
  ctx.fillStyle = colours.surface
  ctx.fillRect(0, 0, grid.width, grid.top)
  const [first, last] = range(grid.x, grid.width - grid.left, grid.cell, matrix.lines.length)
  const step = nameStep(grid.cell)
  const name = (column: number, words: string) => {
    headFont(drawing, bands.has(column), matrix.lines[column])
    ctx.save()
    ctx.translate(columnX(matrix, grid, column) + grid.cell / 2, grid.top - 6)
    ctx.rotate(-Math.PI / 2)
    ctx.textAlign = 'left'
    ctx.textBaseline = 'middle'
    ctx.fillText(words, 0, 0, grid.top - 12)
    ctx.restore()
  }
  for (let column = first; column < last; column++)
    if (column % step === 0 || bands.has(column)) name(column, matrix.lineHeads[column])
  name(matrix.lines.length, 'invalid')
  name(matrix.lines.length + 1, 'cables')
}

/** Over the corner, where the heads of both directions meet. */
function drawCorner({ ctx, grid, colours }: MatrixDrawing): void {
  ctx.fillStyle = colours.surface
  ctx.fillRect(0, 0, grid.left, grid.top)
  ctx.font = `600 11px ${font}`
  ctx.fillStyle = colours.soft
  ctx.textBaseline = 'alphabetic'
  ctx.textAlign = 'right'
  ctx.fillText('lines →', grid.left - 6, grid.top - 24)
  ctx.fillText('spines ↓', grid.left - 6, grid.top - 8)
}

export function drawMatrix(drawing: MatrixDrawing, ratio: number): void {
  const { ctx, grid, colours } = drawing
  ctx.setTransform(ratio, 0, 0, ratio, 0, 0)
  ctx.fillStyle = colours.surface
  ctx.fillRect(0, 0, Math.ceil(grid.width), Math.ceil(grid.height))
  drawBands(drawing)
  drawCells(drawing)
  drawCursor(drawing)
  const places = marked(drawing)
  columnNames(drawing, new Set(places.map((place) => place.column)))
  rowNames(drawing, new Set(places.map((place) => place.row)))
  drawCorner(drawing)
}
