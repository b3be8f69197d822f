// What is printed: the findings with their parts, of which recording and which time. Made when it is asked for.
import { groupOf, labelOfName, lanesOfFindings, type AppStore, type State } from "../state/state";
import { lengthText, percentText, timeText } from "../state/time";
import { element } from "./dom";
import { findingsOfLane } from "../state/numbers";
import { partsTable, whenText } from "./findings";

function recordings(state: State): HTMLElement {
  const list = element("dl");
  for (const lane of state.recording?.lanes ?? []) {
    const group = state.recording!.groups[lane.group]!;
    const [from, to] = [BigInt(lane.startTicks), BigInt(lane.stopTicks)];
    const period = `${timeText(from, group)} to ${timeText(to, group)}, ${lengthText(to - from, group.ticksPerSecond)}`;
    list.append(
      element("dt", {}, [`${lane.title} (${lane.label})`]),
      element("dd", {}, [`${period}; ${lane.entries} entries, coverage ${percentText(lane.coverage)}`]),
    );
  }
  return list;
}

function fill(report: HTMLElement, state: State): void {
  report.replaceChildren();
  if (!state.recording || !groupOf(state)) return;
  report.append(element("h1", {}, ["Findings"]), recordings(state));
  const { findings } = state;
  const lanes = findings ? lanesOfFindings(findings, findingsOfLane) : [];
  if (!findings?.findings.length) report.append(element("p", {}, ["Nothing was late."]));
  findings?.findings.forEach((finding, i) => {
    const lane = lanes[i] ?? 0;
    const name = labelOfName(state, lane, finding.task) || state.recording!.lanes[lane]!.title;
    report.append(
      element("section", { class: "reported" }, [
        element("h2", {}, [`${i + 1}. ${name}`]),
        element("p", {}, [finding.verdict]),
        element("p", { class: "faint" }, [
          `${whenText(state, finding, lane)}; confidence ${percentText(finding.confidence)}`,
        ]),
        ...(finding.parts.length > 0 ? [partsTable(state, finding, lane)] : []),
      ]),
    );
  });
}

export function makeReport(store: AppStore): void {
  const report = element("div", { id: "report", hidden: "" });
  document.body.append(report);
  addEventListener("beforeprint", () => {
    fill(report, store.now);
    report.hidden = false;
  });
  addEventListener("afterprint", () => {
    report.hidden = true;
    report.replaceChildren();
  });
}
