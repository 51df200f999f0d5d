// The page from its data, part by part.

import { startCard } from './card'
import { readData } from './data'
import { byId } from './dom'
import { keepInAddress, stateFrom } from './fragment'
import { startKeys } from './keys'
import { ListView } from './list'
import { modelOf } from './model'
import { showHead } from './numbers'
import { showRepairs } from './repairs'
import { Store } from './state'
import { startTheme } from './theme'
import { startViews } from './views'

function start(): void {
  const model = modelOf(readData())
  const asked = stateFrom(model, location.hash)
  const store = new Store(model.levels > 0 ? asked : { ...asked, view: 'switches' })
  const app = { model, store }
  startTheme()
  showHead(app)
  showRepairs(app)
  startViews(app)
  startCard(app)
  new ListView(app)
  startKeys(app)
  keepInAddress(model, store)
  byId('skip').addEventListener('click', (event) => {
    event.preventDefault()
    byId('findings-title').focus()
  })
  document.documentElement.dataset.ready = 'true'
}

start()
