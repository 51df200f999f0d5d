// What findings are called, and what there is to do.

import { equal, deepEqual } from 'node:assert/strict'
import test from 'node:test'
import type { RawFinding } from '../src/data'
import { adviceOf, counted, cureOf, headNames, plain, sparePorts, titleOf } from '../src/words'
import {
  fabric,
  invalid,
  leafA,
  leafB,
  missing,
  rootA,
  rootB,
  step,
  uneven,
  withoutCable,
} from './fabric'

function title(raw: RawFinding): string {
  const model = fabric({ findings: [raw] })
  return plain(model, titleOf(model, model.findings[0]))
}

function advice(raw: RawFinding, cables?: number[][]): string {
  const model = fabric({ findings: [raw] }, cables)
  return plain(model, adviceOf(model, model.findings[0]))
}

test('one is not many', () => {
  equal(counted(1, 'link'), '1 link')
  equal(counted(0, 'link'), '0 links')
  equal(counted(1234, 'switch', 'switches'), '1,234 switches')
})

test('titles name switches and ports', () => {
  equal(title(missing), 'No cable between root-a and leaf-a')
  equal(title(invalid(leafA, 5, leafB, 6)), 'leaf-a port 5 is cabled to leaf-b port 6')
  equal(title(invalid(leafA, 5, leafA, 6)), 'leaf-a port 5 is cabled to its own port 6')
})

test('titles count links', () => {
  const [one, two] = [[rootA], [rootA, rootB]]
  equal(title(uneven(4, [{ count: 3, switches: one }])), 'root-a has 3 down-links instead of 4')
  equal(title(uneven(4, [{ count: 1, switches: one }])), 'root-a has 1 down-link instead of 4')
  equal(title(uneven(4, [{ count: 1, switches: two }])), '2 spines have 1 down-link instead of 4')
  const different = [
    { count: 2, switches: [rootA] },
    { count: 3, switches: [rootB] },
  ]
  equal(title(uneven(1, different)), '2 spines do not have 1 down-link')
})

test('advice tells one switch from two', () => {
  const both = advice(invalid(leafA, 5, leafB, 6))
  equal(both.startsWith('Both switches are on rank 1 (leaves).'), true)
  const one = advice(invalid(leafA, 5, leafA, 6))
  equal(one.startsWith('The cable leads back to the switch that it comes from.'), true)
})

test('advice tells the free port of a switch without hosts', () => {
  const text = advice(missing, withoutCable(0, 4))
  equal(text.endsWith(' root-a has no cable at port 4.'), true)
})

test('ports are spare up to the highest of the rank', () => {
  deepEqual(sparePorts(fabric(), 0), [])
  deepEqual(sparePorts(fabric({}, withoutCable(0, 2)), 0), [2])
  deepEqual(sparePorts(fabric({}, withoutCable(0, 4)), 0), [4])
})

test('findings name their repairs', () => {
  const cures = (count: number) => {
    const repairs = Array.from({ length: count }, (_, index) => step(index + 1, [0]))
    const model = fabric({ findings: [missing], repairs })
    return cureOf(model, model.findings[0])
  }
  equal(cures(0), '')
  equal(cures(1), 'cured by repair 1')
  equal(cures(2), 'cured by repairs 1 and 2')
  equal(cures(6), 'cured by repairs 1, 2, 3, 4 and 2 more')
})

test('heads keep what tells names apart', () => {
  deepEqual(headNames(['leaf-1', 'leaf-2'], 8), ['leaf-1', 'leaf-2'])
  deepEqual(headNames(['row-07-leaf08', 'row-07-leaf09'], 8), ['…leaf08', '…leaf09'])
  deepEqual(headNames(['row-07-left', 'row-07-right'], 8), ['…left', '…right'])
  deepEqual(headNames(['only-one-of-them'], 8), ['…of-them'])
  deepEqual(headNames(['same-long-name', 'same-long-name'], 8), ['…name', '…name'])
  deepEqual(headNames(['all-with-a-dash-', 'all-with-a-dash-'], 8), ['…-', '…-'])
  deepEqual(headNames([], 8), [])
})
