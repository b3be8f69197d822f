// Where things lie in the picture, in CSS pixels. timeline/rows.h has the same numbers for the bands of a row.
export const labelWidth = 232;
export const rulerHeight = 30;
export const marksHeight = 10;
export const runsTop = marksHeight;
export const taskRunsHeight = 16;
export const laneRunsHeight = 24;
export const bracketHeight = 5;
export const runsHeight = (isLane: boolean): number => (isLane ? laneRunsHeight : taskRunsHeight);

export interface Size {
  width: number;
  height: number;
}
export const plotWidth = (size: Size): number => Math.max(1, Math.floor(size.width - labelWidth));
export const plotHeight = (size: Size): number => Math.max(1, size.height - rulerHeight);
