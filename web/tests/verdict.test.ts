// The answer in one sentence.

import { equal } from 'node:assert/strict'
import test from 'node:test'
import type { Result } from '../src/data'
import { verdictOf, whatWasChecked } from '../src/verdict'
import { fabric, missing, step } from './fabric'

const verdict = (change: Partial<Result>) => verdictOf(fabric(change))
const two = [missing, missing]

test('a clean fabric says what was checked', () => {
  equal(verdict({}), 'No faults found')
  const checked = 'Checked: 2 levels, 4 switches, 8 cables between them and 6 host links.'
  equal(whatWasChecked(fabric()), checked)
  equal(whatWasChecked(fabric({ findings: two })), '')
  equal(whatWasChecked(fabric({ status: 'failed' })), '')
})

test('with repairs the verdict is that of the terminal', () => {
  equal(verdict({ findings: two, repairs: [step(1, [0, 1])] }), 'What to do')
})

test('without repairs findings are counted', () => {
  equal(verdict({ findings: two }), '2 missing links in neighborhood 0')
})

test('what the answer depends on is said', () => {
  const inferred = { method: 'inferred', misfits: 0, doubt: 'Another tree fits.' } as const
  const found = '2 missing links in neighborhood 0'
  equal(verdict({ findings: two, roots: inferred }), `${found}, if the inferred tree is right`)
  const doubted = { ...inferred, method: 'search' } as const
  equal(verdict({ findings: two, roots: doubted }), `${found}, if the tree is right`)
  equal(verdict({ status: 'failed', roots: doubted }), 'The check could not be finished')
})
