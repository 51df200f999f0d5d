// The list of findings. Only as many rows are made as a reader can take in; the rest on demand.

import { clearFilters, goBack, showFinding, type App } from './actions'
import { copy } from './copy'
import { detailsOf, untoldByTitle } from './details'
import { announce, button, byId, make, nameText, sign } from './dom'
import { searchTexts, shownFindings } from './filter'
import type { Finding } from './model'
import type { Order, State } from './state'
import {
  asText,
  capital,
  counted,
  cureOf,
  cut,
  groupName,
  kindName,
  nameOf,
  number,
  placeOf,
  plain,
  titleOf,
} from './words'

const page = 100
const mostOnPaper = 1000
const mostCopied = 10000
const orderNames: Record<Order, string> = {
  unexplained: 'Unexplained first',
  kind: 'Cables first',
  level: 'Errors first',
  found: 'As found',
  group: 'By group',
}

/** Going on behind the last row that was made brings more of them. */
export function showMore(): void {
  byId('list').querySelector<HTMLElement>('.more')?.click()
}

export class ListView {
  #app: App
  #list = byId('list')
  #textOf: (index: number) => string
  #shown: number[] = []
  #rows = page

  constructor(app: App) {
    this.#app = app
    this.#textOf = searchTexts(app.model)
    this.#listen()
    app.store.watch((state, before) => this.#follow(state, before))
  }

  #listen(): void {
    const { model, store } = this.#app
    document.documentElement.dataset.findings = String(model.findings.length)
    const search = byId<HTMLInputElement>('search')
    search.addEventListener('input', () => store.set({ query: search.value }))
    const groups = byId<HTMLSelectElement>('in-group')
    groups.append(new Option('All groups', '-1'))
    for (const group of model.groups)
      if (group.findings.length > 0)
        groups.append(new Option(capital(groupName(group)), String(group.index)))
    groups.addEventListener('change', () => store.set({ inGroup: Number(groups.value) }))
    const orders = byId<HTMLSelectElement>('order')
    for (const [order, name] of Object.entries(orderNames))
      if (order !== 'unexplained' || model.repairs.length > 0)
        orders.append(new Option(name, order))
    orders.addEventListener('change', () => store.set({ order: orders.value as Order }))
    const all = byId('copy-all')
    all.addEventListener('click', () => void copy(this.#allAsText(), all))
    this.#list.addEventListener('keydown', (event) => this.#key(event))
    addEventListener('beforeprint', () => this.#fill(mostOnPaper, true))
    addEventListener('afterprint', () => this.#fill(this.#rows))
  }

  #follow(state: State, before: State): void {
    const filters = (one: State) =>
      [one.kind, one.inGroup, one.atSwitch, one.query, one.order].join('\n')
    if (state === before || filters(state) !== filters(before)) this.#filter(state)
    if (state.finding === before.finding && state !== before) return
    this.#close(before.finding)
    this.#open(state.finding)
  }

  #filter(state: State): void {
    const { model } = this.#app
    byId<HTMLInputElement>('search').value = state.query
    byId<HTMLSelectElement>('in-group').value = String(state.inGroup)
    byId<HTMLSelectElement>('order').value = state.order
    this.#shown = shownFindings(model, state, this.#textOf)
    this.#rows = Math.max(page, this.#shown.indexOf(state.finding) + 1)
    this.#fill(this.#rows)
    this.#tellFilters(state)
    if (this.#list.dataset.shown !== undefined) announce(counted(this.#shown.length, 'finding'))
    this.#list.dataset.shown = String(this.#shown.length)
  }

  #fill(most: number, onPaper = false): void {
    const { model, store } = this.#app
    const shown = this.#shown.slice(0, most)
    this.#list.replaceChildren(
      ...shown.map((index) => {
        const row = this.#row(model.findings[index])
        if (onPaper && index !== store.state.finding)
          row.append(...untoldByTitle(this.#app, model.findings[index]))
        return row
      }),
    )
    this.#open(store.state.finding, false)
    const rest = this.#shown.length - shown.length
    if (rest > 0) this.#list.append(this.#moreRow(rest))
    if (this.#shown.length === 0)
      this.#list.append(make('li', { class: 'note' }, 'No finding matches.'))
    const total = model.findings.length
    byId('shown').textContent =
      this.#shown.length === total && rest === 0
        ? number.format(total)
        : `${number.format(shown.length)} of ${number.format(this.#shown.length)} shown` +
          (this.#shown.length < total ? `, ${number.format(total)} in all` : '')
    byId('copy-all').hidden = this.#shown.length === 0
  }

  #moreRow(rest: number): HTMLElement {
    const text = `Show ${number.format(Math.min(page, rest))} more of ${number.format(rest)}`
    const more = button(text, { class: 'more' }, () => {
      const first = this.#rows
      this.#rows += page
      this.#fill(this.#rows)
      this.#list.querySelectorAll<HTMLElement>('.row')[first]?.focus()
    })
    return make('li', { class: 'note' }, more)
  }

  #row(finding: Finding): HTMLElement {
    const { model, store } = this.#app
    const { raw, index } = finding
    const level = raw.level === 3 ? 'error' : 'warning'
    const title = titleOf(model, finding).map((part) =>
      typeof part === 'string' ? part : make('b', {}, nameText(nameOf(model.switches[part]))),
    )
    const row = button(
      '',
      {
        class: `row ${level}`,
        'data-finding': index,
        'data-cured-by': finding.curedBy.map((at) => model.repairs[at].raw.id).join(' '),
        'aria-expanded': 'false',
      },
      () => {
        if (store.state.finding === index) goBack(this.#app)
        else showFinding(this.#app, index)
      },
    )
    row.append(
      sign(raw.kind),
      make(
        'span',
        { class: 'row-text' },
        make('span', { class: 'row-title' }, ...title),
        make(
          'span',
          { class: 'row-place' },
          sign(level),
          [capital(level), capital(cut(placeOf(finding), 80)), cureOf(model, finding)]
            .filter(Boolean)
            .join(' · '),
        ),
      ),
    )
    return make('li', {}, row)
  }

  #rowOf(index: number): HTMLElement | null {
    return this.#list.querySelector(`[data-finding="${index}"]`)
  }

  #close(index: number): void {
    const row = this.#rowOf(index)
    row?.removeAttribute('aria-current')
    row?.setAttribute('aria-expanded', 'false')
    row?.parentElement?.querySelector('.details')?.remove()
  }

  #open(index: number, tell = true): void {
    const { model } = this.#app
    if (index < 0) return
    if (!this.#rowOf(index) && this.#shown.includes(index)) {
      this.#rows = this.#shown.indexOf(index) + 1
      this.#fill(this.#rows)
      return
    }
    const row = this.#rowOf(index)
    if (row && !row.hasAttribute('aria-current')) {
      row.setAttribute('aria-current', 'true')
      row.setAttribute('aria-expanded', 'true')
      row.after(detailsOf(this.#app, model.findings[index]))
    }
    if (!tell) return
    if (this.#list.scrollHeight > this.#list.clientHeight)
      row?.parentElement?.scrollIntoView({ block: 'nearest' })
    announce(`Shown: ${plain(model, titleOf(model, model.findings[index]))}`)
  }

  #key(event: KeyboardEvent): void {
    const rows = [...this.#list.querySelectorAll<HTMLElement>('.row')]
    const at = rows.indexOf(document.activeElement as HTMLElement)
    const to = { ArrowDown: at + 1, ArrowUp: at - 1, Home: 0, End: rows.length - 1 }[event.key]
    if (to === undefined || at < 0) return
    if (to === rows.length) showMore()
    else rows[to]?.focus()
    event.preventDefault()
  }

  #tellFilters(state: State): void {
    const { model, store } = this.#app
    const chips: HTMLElement[] = []
    const chip = (text: string, off: () => void) =>
      chips.push(
        button(`${text} ×`, { class: 'chip', 'aria-label': `Remove filter: ${text}` }, off),
      )
    if (state.kind) chip(capital(kindName(state.kind)[1]), () => store.set({ kind: '' }))
    if (state.atSwitch >= 0)
      chip(`At ${nameOf(model.switches[state.atSwitch], 24)}`, () => store.set({ atSwitch: -1 }))
    if (chips.length > 1)
      chips.push(button('All', { class: 'chip' }, () => clearFilters(this.#app)))
    byId('filters').replaceChildren(...chips)
  }

  #allAsText(): string {
    const { model } = this.#app
    const texts = this.#shown
      .slice(0, mostCopied)
      .map((index) => asText(model, model.findings[index]))
    const rest = this.#shown.length - texts.length
    if (rest > 0) texts.push(`and ${counted(rest, 'more finding')}`)
    return texts.join('\n')
  }
}
