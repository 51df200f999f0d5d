// The curve of a cable: down from one rank to the next, a bow between switches side by side, or a
// loop at one.

export interface Point {
  x: number
  y: number
}

export type Curve = [a: Point, b: Point, c: Point, d: Point]

/** `highest`: how far a bow may leave its row. */
export function curveBetween(a: Point, d: Point, highest: number): Curve {
  if (Math.abs(a.y - d.y) > highest) {
    const middle = (a.y + d.y) / 2
    return [a, { x: a.x, y: middle }, { x: d.x, y: middle }, d]
  }
  const bow = Math.min(highest, 14 + Math.abs(a.x - d.x) * 0.3)
  return [a, { x: a.x, y: a.y - bow }, { x: d.x, y: d.y - bow }, d]
}

/** A cable that comes back to where it starts. A height below 0 leads upwards. */
export function loopAt(point: Point, width: number, height: number): Curve {
  const { x, y } = point
  return [point, { x: x - width, y: y + height }, { x: x + width, y: y + height }, point]
}

export function pointOn([a, b, c, d]: Curve, t: number): Point {
  const s = 1 - t
  const [p, q, r, u] = [s * s * s, 3 * s * s * t, 3 * s * t * t, t * t * t]
  return { x: p * a.x + q * b.x + r * c.x + u * d.x, y: p * a.y + q * b.y + r * c.y + u * d.y }
}

export function trace(path: CanvasPath, [a, b, c, d]: Curve): void {
  path.moveTo(a.x, a.y)
  path.bezierCurveTo(b.x, b.y, c.x, c.y, d.x, d.y)
}

const steps = 24

/** How far a point is from a curve, about. */
export function distanceTo(curve: Curve, x: number, y: number): number {
  let nearest = Infinity
  let from = curve[0]
  for (let step = 1; step <= steps; step++) {
    const to = pointOn(curve, step / steps)
    nearest = Math.min(nearest, distanceToLine(from, to, x, y))
    from = to
  }
  return nearest
}

function distanceToLine(a: Point, b: Point, x: number, y: number): number {
  const [dx, dy] = [b.x - a.x, b.y - a.y]
  const length = dx * dx + dy * dy
  const t = length > 0 ? Math.max(0, Math.min(1, ((x - a.x) * dx + (y - a.y) * dy) / length)) : 0
  return Math.hypot(x - a.x - t * dx, y - a.y - t * dy)
}
