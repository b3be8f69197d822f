// The page: makes all parts, and opens what it carries or gets.
import { Scene } from "./draw/scene";
import { plotHeight } from "./draw/layout";
import { Minimap } from "./draw/minimap";
import { listenToKeys } from "./input/keys";
import { Pointer } from "./input/pointer";
import { ofChooser, ofDrop, type Chosen } from "./load/chosen";
import { Client } from "./load/client";
import { takeRecording, takeText, type Embedded } from "./load/embedded";
import { makeHelp } from "./panels/help";
import { makeNotes } from "./panels/notes";
import { makeReport } from "./panels/report";
import { makeSidebar } from "./panels/sidebar";
import { makeToolbar } from "./panels/toolbar";
import { makeSearch } from "./panels/search";
import { makeSecondPane } from "./second";
import { Actions } from "./state/actions";
import { Link } from "./state/link";
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
const search = makeSearch(area, { store, actions, client, add });
const link = new Link(store, actions);
actions.height = () => plotHeight(scene.size);
makeToolbar(byId("toolbar"), { store, actions, client, add }, () => chooser.click(), help, search);
new Minimap(byId("map"), store, actions, client);
makeSidebar(byId("sidebar"), { store, actions, client, add });
makeReport(store);
makeNotes(area, scene, store);
const second = makeSecondPane(byId("area2"), store, actions, client);
listenToKeys({
  actions,
  pointerShare: () => pointer.share(),
  height: () => plotHeight(scene.size),
  search,
  toggleHelp: help,
});
client.onWarning = line => store.set({ problems: [...store.now.problems, line] });

const embedded = takeRecording();

async function open(what: Embedded | Chosen): Promise<void> {
  store.set({
    phase: "loading",
    problems: [],
    recording: null,
    rows: [],
    selection: null,
    picked: null,
    shownJob: null,
    pinned: [],
    pieces: null,
    places: null,
    charted: null,
    compared: null,
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
    what === embedded ? link.read() : link.forget();
    await scene.drawn();
    await actions.numbers.findWhatWasLate(false);
  } catch (error) {
    const message = error instanceof Error ? error.message : String(error);
    store.set({ phase: store.now.recording ? "ready" : "empty", problems: [...store.now.problems, message] });
  }
}

// Beside what is open, and at once compared with it.
async function add(what: Chosen): Promise<void> {
  try {
    await client.store(what.files);
    const recording = (await client.call("open", { arguments: what.arguments, adds: true })).json;
    store.set({ problems: recording.problems, recording, compared: null, findings: null, charted: null });
    await actions.compare(0, recording.arguments.length - 1);
    await actions.numbers.findWhatWasLate(false);
  } catch (error) {
    store.set({ problems: [...store.now.problems, error instanceof Error ? error.message : String(error)] });
  }
}

chooser.addEventListener("change", () => {
  if (chooser.files && chooser.files.length > 0) void open(ofChooser(chooser.files));
});
document.addEventListener("dragover", event => event.preventDefault());
document.addEventListener("drop", event => {
  event.preventDefault();
  if (event.dataTransfer)
    ofDrop(event.dataTransfer)
      .then(open)
      .catch((error: unknown) => store.set({ problems: [...store.now.problems, String(error)] }));
});

if (embedded) void open(embedded);

// For tests: what the page knows and can ask, no more than a reader of it could.
Object.assign(window, { tasklog: { store, client, actions, second } });
