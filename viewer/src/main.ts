// The page: makes all parts, and opens what it carries or gets.
import { Scene } from "./draw/scene";
import { plotHeight } from "./draw/layout";
import { listenToKeys } from "./input/keys";
import { Pointer } from "./input/pointer";
import { ofChooser, ofDrop, type Chosen } from "./load/chosen";
import { Client } from "./load/client";
import { takeRecording, takeText, type Embedded } from "./load/embedded";
import { makeHelp } from "./panels/help";
import { makeNotes } from "./panels/notes";
import { makeSidebar } from "./panels/sidebar";
import { makeToolbar } from "./panels/toolbar";
import { Actions } from "./state/actions";
import { makeStore } from "./state/state";

const byId = <Kind extends HTMLElement>(id: string): Kind => document.getElementById(id) as Kind;

const store = makeStore();
const client = new Client(takeText("worker"), takeText("wasm"));
const actions = new Actions(store, client);
const area = byId("area");
const scene = new Scene(store, client, area, byId("rows"), byId("marks"));
const pointer = new Pointer(area, scene, store, actions, client);
const help = makeHelp();
const chooser = byId<HTMLInputElement>("chooser");
const toolbar = makeToolbar(byId("toolbar"), { store, actions, client }, () => chooser.click(), help);
makeSidebar(byId("sidebar"), { store, actions, client });
makeNotes(area, scene, store);
listenToKeys({
  actions,
  pointerShare: () => pointer.share(),
  height: () => plotHeight(scene.size),
  focusFilter: () => toolbar.focusFilter(),
  toggleHelp: help,
});
client.onWarning = line => store.set({ problems: [...store.now.problems, line] });

const findingsOfLane = 50;

async function open(what: Embedded | Chosen): Promise<void> {
  store.set({
    phase: "loading",
    problems: [],
    recording: null,
    rows: [],
    selection: null,
    picked: null,
    shownJob: null,
    stats: null,
    findings: null,
  });
  try {
    await client.store(what.files);
    const { files: _, ...keys } = what;
    const description = (await client.call("open", keys)).json;
    const group = description.groups[0];
    store.set({
      phase: description.lanes.length > 0 ? "ready" : "empty",
      problems: [...store.now.problems, ...description.problems],
      recording: description,
      group: 0,
      scrollTop: 0,
    });
    if (!group) return;
    actions.show({ from: BigInt(group.shownFrom), to: BigInt(group.shownTo) });
    store.set({ findings: (await client.call("explain", { limit: findingsOfLane })).json });
  } catch (error) {
    const message = error instanceof Error ? error.message : String(error);
    store.set({ phase: store.now.recording ? "ready" : "empty", problems: [...store.now.problems, message] });
  }
}

chooser.addEventListener("change", () => {
  if (chooser.files && chooser.files.length > 0) void open(ofChooser(chooser.files));
});
document.addEventListener("dragover", event => event.preventDefault());
document.addEventListener("drop", event => {
  event.preventDefault();
  if (event.dataTransfer) void ofDrop(event.dataTransfer).then(open);
});

const embedded = takeRecording();
if (embedded) void open(embedded);

// For tests: what the page knows and can ask, no more than a reader of it could.
Object.assign(window, { tasklog: { store, client, actions } });
