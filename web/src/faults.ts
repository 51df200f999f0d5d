// Findings that have a place in the picture: lines between two switches, and marked switches.

import type { Model } from './model'

export interface FaultLine {
  finding: number
  missing: boolean
  level: number
  a: number
  b: number
  /** Of an invalid link. */
  ports: [number, number] | null
}

export function faultLines(model: Model): FaultLine[] {
  const lines: FaultLine[] = []
  for (const { raw, index } of model.findings) {
    if (raw.kind !== 'missing-link' && raw.kind !== 'invalid-link') continue
    const missing = raw.kind === 'missing-link'
    const [a, b] = (missing ? [raw.spine, raw.line] : raw.ends.map((end) => end.switch)).map(
      model.switchAt,
    )
    const ports: FaultLine['ports'] = missing ? null : [raw.ends[0].port, raw.ends[1].port]
    if (a >= 0 && b >= 0) lines.push({ finding: index, missing, level: raw.level, a, b, ports })
  }
  return lines
}

/** Switch by switch: 3 has an error, 2 a warning, 0 nothing. */
export function levelsOfSwitches(model: Model): Uint8Array {
  const levels = new Uint8Array(model.switches.length)
  for (const { raw, switches } of model.findings)
    for (const index of switches) levels[index] = Math.max(levels[index], raw.level)
  return levels
}
