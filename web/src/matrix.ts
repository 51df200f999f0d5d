// The matrix of a group: moving in it, and what its cells tell.

import { showFinding, showGroup, showSwitch, type App } from './actions'
import { sheetIn, type Sheet } from './canvas'
import { announce, button, byId, make } from './dom'
import { drawMatrix, columnX, gutter, rowY, wholeSize, type Grid, type Place } from './draw_matrix'
import { matrixOf, type Matrix } from './matrix_model'
import { chosenIn, type State } from './state'
import { palette } from './theme'
import { hideTip, showTip, type Tip } from './tip'
import { capital, counted, groupName, nameOf, number, plain, titleOf } from './words'

const cells = { least: 3, readable: 11, most: 44 }
const none: Place = { row: -1, column: -1 }
const mostPorts = 12

/** The group to begin with: the first that something was found in. */
function firstGroup(app: App): number {
  const { groups } = app.model
  const found = groups.findIndex((group) => group.findings.length > 0)
  return found >= 0 ? found : groups.length > 0 ? 0 : -1
}

export class MatrixView {
  #app: App
  #scroller: HTMLElement
  #space: HTMLElement
  #sheet: Sheet
  #matrix: Matrix | null = null
  #cell = 22
  #cursor: Place = none

  constructor(app: App, host: HTMLElement) {
    this.#app = app
    this.#space = make('div', { class: 'space' })
    this.#scroller = make('div', { class: 'scroller', tabindex: -1 }, this.#space)
    const place = make('div', { class: 'fixed' })
    host.append(place, this.#scroller)
    this.#sheet = sheetIn(
      place,
      'The matrix of spines and lines. Arrow keys go from cell to cell, Enter shows what was found there.',
      () => this.#draw(),
      () => this.#fit(),
    )
    this.#listen()
    app.store.watch((state, before) => this.#follow(state, before))
  }

  tools(): HTMLElement[] {
    return [
      button('−', { title: 'Smaller (-)', 'aria-label': 'Smaller cells' }, () =>
        this.#resize(1 / 1.35),
      ),
      button('+', { title: 'Larger (+)', 'aria-label': 'Larger cells' }, () => this.#resize(1.35)),
      button('Fit', { title: 'Show all (0)' }, () => this.#fit()),
    ]
  }

  #listen(): void {
    const { canvas } = this.#sheet
    const scroller = this.#scroller
    scroller.addEventListener('scroll', () => this.#sheet.redraw())
    scroller.addEventListener('pointermove', (event) => this.#hover(event))
    scroller.addEventListener('pointerleave', () => this.#moveTo(none))
    scroller.addEventListener('click', (event) => {
      this.#hover(event)
      this.#choose(this.#placeAt(event))
    })
    canvas.addEventListener('keydown', (event) => this.#key(event))
    canvas.addEventListener('blur', () => this.#moveTo(none))
  }

  #follow(state: State, before: State): void {
    const index = state.group >= 0 ? state.group : (this.#matrix?.group ?? firstGroup(this.#app))
    if (state.view === 'matrix' && index >= 0 && this.#matrix?.group !== index) {
      this.#matrix = matrixOf(this.#app.model, index)
      this.#cursor = none
      this.#fit()
    }
    if (state.view === 'matrix' && (state.finding !== before.finding || state.view !== before.view))
      this.#bringIntoSight(state)
    this.#tellGroup(state)
    this.#sheet.redraw()
  }

  #tellGroup(state: State): void {
    const chooser = byId<HTMLSelectElement>('group')
    const shown = state.view === 'matrix' ? (this.#matrix?.group ?? -1) : state.group
    chooser.value = String(shown)
    this.#sheet.canvas.dataset.group = this.#matrix
      ? groupName(this.#app.model.groups[this.#matrix.group])
      : ''
  }

  #grid(): Grid {
    const most = this.#sheet.width < 600 ? 100 : 150
    const room = (heads: string[] = []) =>
      Math.min(most, Math.max(0, ...heads.map((head) => head.length)) * 6.8 + 18)
    return {
      cell: this.#cell,
      left: Math.max(64, room(this.#matrix?.spineHeads)),
      top: Math.max(58, room(this.#matrix?.lineHeads)),
      x: this.#scroller.scrollLeft,
      y: this.#scroller.scrollTop,
      width: this.#sheet.width,
      height: this.#sheet.height,
    }
  }

  #draw(): void {
    const { ctx, ratio } = this.#sheet
    const { model, store } = this.#app
    const grid = this.#grid()
    if (!this.#matrix) return
    const colours = palette()
    const { state } = store
    drawMatrix(
      { ctx, model, matrix: this.#matrix, grid, state, colours, cursor: this.#cursor },
      ratio,
    )
    this.#sheet.canvas.dataset.drawn = 'true'
  }

  /** The largest cells with which all of the matrix is in sight, but none too small to be read. */
  #fit(): void {
    const matrix = this.#matrix
    if (!matrix || this.#sheet.width === 0) return
    const grid = this.#grid()
    const room = Math.min(
      (grid.width - grid.left - gutter - 12) / (matrix.lines.length + 2),
      (grid.height - grid.top - gutter - 12) / (matrix.spines.length + 2),
    )
    this.#setCell(Math.max(cells.readable, Math.min(cells.most - 8, Math.floor(room))))
    this.#bringIntoSight(this.#app.store.state)
  }

  #resize(by: number): void {
    const cell = Math.round(this.#cell * by)
    this.#setCell(Math.max(cells.least, Math.min(cells.most, cell)))
    this.#bringIntoSight(this.#app.store.state)
  }

  #setCell(cell: number): void {
    this.#cell = cell
    if (!this.#matrix) return
    const [width, height] = wholeSize(this.#matrix, this.#grid())
    this.#space.style.width = `${width}px`
    this.#space.style.height = `${height}px`
    this.#sheet.redraw()
  }

  #bringIntoSight(state: State): void {
    const matrix = this.#matrix
    if (!matrix) return
    const switches = chosenIn(this.#app.model, state)
    const row = matrix.spines.findIndex((index) => switches.includes(index))
    const column = matrix.lines.findIndex((index) => switches.includes(index))
    this.#scrollTo({ row, column })
  }

  #scrollTo({ row, column }: Place): void {
    const matrix = this.#matrix
    if (!matrix) return
    const grid = this.#grid()
    const [x, y] = [columnX(matrix, grid, column), rowY(matrix, grid, row)]
    const outside = (at: number, from: number, to: number) => at < from || at + grid.cell > to
    if (column >= 0 && outside(x, grid.left, grid.width))
      this.#scroller.scrollLeft += x - (grid.left + grid.width) / 2
    if (row >= 0 && outside(y, grid.top, grid.height))
      this.#scroller.scrollTop += y - (grid.top + grid.height) / 2
  }

  #placeAt(event: MouseEvent): Place {
    const matrix = this.#matrix
    if (!matrix) return none
    const box = this.#sheet.canvas.getBoundingClientRect()
    const grid = this.#grid()
    const index = (at: number, head: number, scroll: number, count: number) => {
      if (at < head) return -1
      const cell = Math.floor((at - head + scroll) / grid.cell)
      const behind = Math.floor((at - head + scroll - gutter) / grid.cell)
      if (cell < count) return cell
      return behind >= count && behind < count + 2 ? behind : -1
    }
    return {
      row: index(event.clientY - box.top, grid.top, grid.y, matrix.spines.length),
      column: index(event.clientX - box.left, grid.left, grid.x, matrix.lines.length),
    }
  }

  #hover(event: MouseEvent): void {
    const place = this.#placeAt(event)
    this.#moveTo(place)
    const tip = this.#tipAt(place)
    if (tip) showTip(tip, event.clientX, event.clientY)
    else hideTip()
    const leads = this.#findingsAt(place).length > 0 || this.#namedAt(place) >= 0
    this.#scroller.classList.toggle('pointing', leads)
  }

  #moveTo(place: Place): void {
    if (place.row < 0 && place.column < 0) hideTip()
    if (place.row === this.#cursor.row && place.column === this.#cursor.column) return
    this.#cursor = place
    this.#sheet.redraw()
  }

  #findingsAt({ row, column }: Place): number[] {
    const matrix = this.#matrix
    if (!matrix || row < 0 || column < 0) return []
    const [rows, columns] = [matrix.spines.length, matrix.lines.length]
    if (row < rows && column < columns) {
      const { missing } = matrix.cells[row * columns + column]
      return missing >= 0 ? [missing] : []
    }
    if (row < rows && column === columns) return matrix.spineLinks[row]
    return row === rows && column < columns ? matrix.lineLinks[column] : []
  }

  /** The switch whose name is there; -1: none. */
  #namedAt({ row, column }: Place): number {
    if (row < 0 === column < 0) return -1
    return (column < 0 ? this.#matrix?.spines[row] : this.#matrix?.lines[column]) ?? -1
  }

  #choose(place: Place): void {
    const found = this.#findingsAt(place)
    const named = this.#namedAt(place)
    if (named >= 0) showSwitch(this.#app, named)
    if (found.length === 0) return
    const after = found.indexOf(this.#app.store.state.finding) + 1
    showFinding(this.#app, found[after % found.length])
  }

  #tipAt(place: Place): Tip | null {
    const matrix = this.#matrix
    const named = this.#namedAt(place)
    if (matrix && named >= 0) return this.#headTip(matrix, named)
    if (!matrix || place.row < 0 || place.column < 0) return null
    const { model } = this.#app
    const spine = matrix.spines[place.row]
    const line = matrix.lines[place.column]
    const found = this.#findingsAt(place).map((index) =>
      plain(model, titleOf(model, model.findings[index])),
    )
    const name = (index: number) => nameOf(model.switches[index], 40)
    if (spine !== undefined && line !== undefined)
      return {
        title: `${name(spine)} – ${name(line)}`,
        lines: [...this.#portsOf(spine, line), ...found],
      }
    const own = spine ?? line
    if (own === undefined) return null
    if (found.length > 0) return { title: name(own), lines: found }
    const sum = spine === undefined ? matrix.lineSums[place.column] : matrix.spineSums[place.row]
    const isSum = place.row > matrix.spines.length || place.column > matrix.lines.length
    const usual = spine === undefined ? matrix.lineSum : matrix.spineSum
    const told = `${counted(sum, 'cable')} inside the group`
    const sums = sum === usual ? told : `${told} instead of ${number.format(usual)}`
    const lines = isSum ? [sums] : ['No invalid link']
    return { title: name(own), lines }
  }

  /** Cables that lead out of the group have no cell in its matrix. */
  #headTip(matrix: Matrix, index: number): Tip {
    const { model } = this.#app
    const uneven = model.switches[index].findings
      .map((finding) => model.findings[finding])
      .filter(({ raw, groups }) => raw.kind === 'uneven-links' && groups.includes(matrix.group))
    return {
      title: nameOf(model.switches[index]),
      lines: uneven.map((finding) => plain(model, titleOf(model, finding))),
    }
  }

  #portsOf(spine: number, line: number): string[] {
    const { model } = this.#app
    const cables = model.cablesOf(spine).filter((cable) => cable.peer === line)
    const texts = cables
      .slice(0, mostPorts)
      .map((cable) => `port ${cable.port} – port ${cable.peerPort}`)
    if (cables.length > mostPorts) texts.push(`and ${cables.length - mostPorts} more`)
    return texts.length > 0 ? texts : ['No cable']
  }

  #key(event: KeyboardEvent): void {
    const matrix = this.#matrix
    if (!matrix || event.ctrlKey || event.metaKey || event.altKey) return
    const steps: Record<string, [number, number]> = {
      ArrowUp: [-1, 0],
      ArrowDown: [1, 0],
      ArrowLeft: [0, -1],
      ArrowRight: [0, 1],
    }
    if (event.key === '+' || event.key === '=') this.#resize(1.35)
    else if (event.key === '-') this.#resize(1 / 1.35)
    else if (event.key === '0') this.#fit()
    else if (event.key === 'Enter') this.#choose(this.#cursor)
    else if (steps[event.key]) this.#step(matrix, steps[event.key])
    else return
    event.preventDefault()
  }

  #step(matrix: Matrix, [down, right]: [number, number]): void {
    const within = (value: number, count: number) => Math.max(0, Math.min(count + 1, value))
    const { row, column } = this.#cursor
    const fresh = row < 0 || column < 0
    this.#moveTo({
      row: fresh ? 0 : within(row + down, matrix.spines.length),
      column: fresh ? 0 : within(column + right, matrix.lines.length),
    })
    this.#scrollTo(this.#cursor)
    const tip = this.#tipAt(this.#cursor)
    if (!tip) return
    announce(`${tip.title}: ${tip.lines.join(', ')}`)
    const box = this.#sheet.canvas.getBoundingClientRect()
    const grid = this.#grid()
    showTip(
      tip,
      box.left + columnX(matrix, grid, this.#cursor.column) + grid.cell,
      box.top + rowY(matrix, grid, this.#cursor.row) + grid.cell,
    )
  }
}

/** The choice of a group, for the tree and the matrix. */
export function startGroupChooser(app: App): void {
  const chooser = byId<HTMLSelectElement>('group')
  chooser.append(new Option('All', '-1'))
  for (const group of app.model.groups) {
    const found = group.findings.length > 0 ? ` – ${counted(group.findings.length, 'finding')}` : ''
    chooser.append(new Option(`${capital(groupName(group))}${found}`, String(group.index)))
  }
  chooser.addEventListener('change', () => {
    showGroup(app, Number(chooser.value))
  })
}
