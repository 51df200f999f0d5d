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

test('repairs come first', () => {
  const all = 'would put this fabric right'
  equal(verdict({ findings: two, repairs: [step(1, [0, 1])] }), `1 repair ${all}`)
  equal(verdict({ findings: two, repairs: [step(1, [0]), step(2, [1])] }), `2 repairs ${all}`)
  equal(verdict({ findings: two, repairs: [step(1, [1])] }), '1 repair cures 1 of 2 findings')
  equal(verdict({ findings: two, repairs: [step(1, [])] }), '1 repair, and 2 findings')
})

test('nothing is said of records that are not listed', () => {
  const repairs = [step(1, [0, 1])]
  equal(verdict({ findings: two, repairs, recordsNotListed: 9 }), '1 repair cures 2 of 2 findings')
})

test('without repairs findings are counted', () => {
  equal(verdict({ findings: two }), '2 missing links in neighborhood 0')
})

test('what the answer depends on is said', () => {
  const inferred = { method: 'inferred', misfits: 0, doubt: 'Another tree fits.' } as const
  const repairs = [step(1, [0, 1])]
  const right = '1 repair would put this fabric right'
  equal(
    verdict({ findings: two, repairs, roots: inferred }),
    `${right}, if the inferred tree is right`,
  )
  const doubted = { ...inferred, method: 'search' } as const
  equal(verdict({ findings: two, repairs, roots: doubted }), `${right}, if the tree is right`)
  equal(verdict({ status: 'failed', roots: doubted }), 'The check could not be finished')
})
