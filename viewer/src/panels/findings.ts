// What `tasklog explain` finds; a click shows the moment.
import { groupOf, type State } from "../state/state";
import { timeText } from "../state/time";
import type { Finding } from "../worker/protocol";
import { button, element, swatch } from "./dom";
import type { Panel } from "./panel";

function colourOf(state: State, finding: Finding): number | null {
  const lane = state.recording?.lanes.find(lane => lane.name === finding.lane);
  return lane?.tasks.find(task => task.name === finding.task)?.colour ?? null;
}

function when(state: State, finding: Finding): string {
  const group = groupOf(state);
  const times = finding.occurrences.length > 1 ? `${finding.occurrences.length} times, worst` : "once,";
  return group ? `${times} at ${timeText(BigInt(finding.job.activationTicks), group)}` : times;
}

export const findings: Panel = {
  name: "findings",
  title: "Findings",
  watches: ["findings", "phase"],
  show(place, { store, actions }) {
    const state = store.now;
    if (!state.findings) {
      place.append(
        element("p", { class: "hint" }, [
          state.phase === "ready" ? "Looking for what was late …" : "Open a recording first.",
        ]),
      );
      return;
    }
    if (state.findings.findings.length === 0)
      place.append(
        element("p", { class: "hint" }, ["Nothing was late: no finding, by the same rules as the command."]),
      );
    const list = element("ol", { class: "findings" });
    for (const finding of state.findings.findings) {
      const card = button("", () => actions.showFinding(finding), { class: "finding" });
      const colour = colourOf(state, finding);
      const head = element("span", { class: "finding-head" }, [
        ...(colour === null ? [] : [swatch(colour)]),
        element("strong", {}, [finding.task ?? finding.lane]),
        element("span", { class: "faint" }, [finding.lane]),
      ]);
      card.append(
        head,
        element("span", { class: "verdict" }, [finding.verdict]),
        element("span", { class: "faint" }, [when(state, finding)]),
      );
      list.append(element("li", {}, [card]));
    }
    place.append(list);
  },
};
