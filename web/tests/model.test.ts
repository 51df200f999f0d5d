// The fabric as the views look at it.

import { deepEqual, equal } from 'node:assert/strict'
import test from 'node:test'
import { matrixOf, usual } from '../src/matrix_model'
import { countCured } from '../src/model'
import { fabric, invalid, leafA, missing, rootA, step, uneven, withoutCable } from './fabric'

test('the usual number is what most have', () => {
  equal(usual([4, 4, 3]), 4)
  equal(usual([5, 4, 4]), 4)
  equal(usual([]), 0)
})

test('of several usual numbers the largest is meant', () => {
  equal(usual([14, 16]), 16)
  equal(usual([16, 14]), 16)
})

test('what is expected is usual where there is such a number', () => {
  equal(usual([3, 3, 4], 4), 4)
  equal(usual([4, 4, 3], 5), 4)
})

test('a matrix marks the spine with fewer cables', () => {
  const finding = uneven(4, [{ count: 3, switches: [rootA] }])
  const matrix = matrixOf(fabric({ findings: [finding] }, withoutCable(0, 4)), 0)
  deepEqual(matrix.spineSums, [3, 4])
  equal(matrix.spineSum, 4)
  deepEqual([...matrix.uneven], [[0, 3]])
})

test('a cable back to its switch has two ends there', () => {
  const model = fabric({ findings: [invalid(leafA, 5, leafA, 6)] }, [[2, 5, 2, 6]])
  deepEqual(
    model.cablesOf(2).map(({ port, peer, peerPort }) => [port, peer, peerPort]),
    [
      [5, 2, 6],
      [6, 2, 5],
    ],
  )
  deepEqual([...model.invalidBy], [0])
})

test('findings know the repairs that cure them', () => {
  const repairs = [step(1, [1]), step(2, [1, 2])]
  const model = fabric({ findings: [missing, missing, missing], repairs })
  deepEqual(
    model.findings.map((finding) => finding.curedBy),
    [[], [0, 1], [1]],
  )
  equal(countCured(model), 2)
})
