// The page of a recorded demo in a browser, held against what the command says of the same files.
// usage: node --test page_test.mjs, with TASKLOG_PROGRAM, TASKLOG_NPM and TASKLOG_SCRATCH in the environment
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { mkdirSync, rmSync, writeFileSync } from "node:fs";
import { join } from "node:path";
import { after, before, test } from "node:test";
import { drawn, hasBrowser, launch, openPage, until } from "./browser.mjs";

const { TASKLOG_PROGRAM: program, TASKLOG_NPM: modules, TASKLOG_SCRATCH: scratch } = process.env;
const skip = hasBrowser ? false : "no browser: apt-get install chromium";
if (skip) console.log(`skipped: ${skip}`);

// JSON as it is: numbers of ticks are texts, so nothing is rounded on the way.
const tasklog = (...args) => execFileSync(program, args, { cwd: scratch, encoding: "utf8" });
// Findings are exit code 1.
function explained() {
  try {
    return tasklog("explain", "demo", "--format", "json", "--limit", "50");
  } catch (error) {
    return error.stdout;
  }
}

let browser;
let page;

before(async () => {
  if (skip) return;
  rmSync(scratch, { recursive: true, force: true });
  mkdirSync(scratch, { recursive: true });
  tasklog("record", "demo", "--logger", "all", "--start", "--for", "1s", "-o", "demo");
  tasklog("view", "demo", "-o", "demo.html");
  browser = await launch(modules);
  page = await openPage(browser, join(scratch, "demo.html"));
  await drawn(page);
});
after(() => browser?.close());

test("each lane is followed by its tasks, the highest priority first", { skip }, async () => {
  const rows = await page.evaluate(() => {
    const { rows, recording } = window.tasklog.store.now;
    return rows.map(row => [
      recording.lanes[row.lane].name,
      row.task === null ? null : recording.lanes[row.lane].tasks[row.task].name,
    ]);
  });
  const expected = JSON.parse(tasklog("stats", "demo", "--format", "json")).lanes.flatMap(lane => [
    [lane.lane, null],
    ...lane.tasks.map(task => [lane.lane, task.name]),
  ]);
  assert.deepEqual(rows, expected);
});

test("statistics are the text of tasklog stats, of all and of a part", { skip }, async () => {
  const stats = keys => page.evaluate(async keys => (await window.tasklog.client.call("stats", keys)).text, keys);
  assert.equal(await stats({}), tasklog("stats", "demo", "--format", "json"));
  const [from, to] = await page.evaluate(() => {
    const { from } = window.tasklog.store.now.view;
    return [`${from + 1234567n}`, `${from + 5432100n}`];
  });
  assert.equal(await stats({ from, to }), tasklog("stats", "demo", "--format", "json", "--from", from, "--to", to));
});

test("a drag over the picture selects, and the table shows that part", { skip }, async () => {
  const box = await page.locator("#area").boundingBox();
  await page.mouse.move(box.x + 500, box.y + 300);
  await page.mouse.down();
  await page.mouse.move(box.x + 700, box.y + 320, { steps: 4 });
  await page.mouse.up();
  await until(page, () => document.querySelector("#tab-statistics[aria-selected=true]"));
  await until(page, () => {
    const { selection, stats } = window.tasklog.store.now;
    return selection && stats?.lanes[0].startTicks === `${selection.from}`;
  });
  const { selection, cells } = await page.evaluate(() => ({
    selection: Object.values(window.tasklog.store.now.selection).map(String),
    cells: [...document.querySelectorAll(".panel tbody td:nth-child(3)")].map(cell => Number(cell.textContent)),
  }));
  const stats = JSON.parse(tasklog("stats", "demo", "--format", "json", "--from", selection[0], "--to", selection[1]));
  assert.deepEqual(
    cells,
    stats.lanes.flatMap(lane => lane.tasks.map(task => task.jobs)),
  );
});

test("findings are the text of tasklog explain", { skip }, async () => {
  const text = await page.evaluate(async () => (await window.tasklog.client.call("explain", { limit: 50 })).text);
  assert.equal(text, explained());
});

test("a run that is wider than a pixel has its task's colour, where its ticks lie", { skip }, async () => {
  const run = await page.evaluate(async () => {
    const { store, actions, client } = window.tasklog;
    actions.clear();
    const lane = store.now.recording.lanes.findIndex(lane => lane.name === "kernel1");
    const task = store.now.recording.lanes[lane].tasks.findIndex(task => task.name === "PositionLoop");
    const next = async at => (await client.call("step", { group: 0, lane, task, kind: "run", at, forward: true })).json;
    const found = await next(BigInt((await next(store.now.view.from)).from)); // the first may fade in
    const length = BigInt(found.to) - BigInt(found.from);
    actions.show({ from: BigInt(found.from) - length, to: BigInt(found.to) + length }); // its middle third
    const wanted = `${store.now.view.from}-${store.now.view.to}`;
    while (document.querySelector("#area").dataset.view !== wanted) await new Promise(requestAnimationFrame);
    const row = store.now.rows.find(row => row.lane === lane && row.task === task);
    const canvas = document.querySelector("#rows");
    const colourAt = share => {
      const [red, green, blue] = canvas
        .getContext("2d")
        .getImageData(232 + Math.floor((canvas.width - 232) * share), 30 + row.top + 20, 1, 1).data;
      return (red << 16) | (green << 8) | blue;
    };
    return {
      colours: [0.3, 0.35, 0.65, 0.7].map(colourAt),
      colour: store.now.recording.lanes[lane].tasks[task].colour,
    };
  });
  // The browser may round a colour on its way.
  const part = (colour, shift) => (colour >> shift) & 255;
  const isNear = colour => [16, 8, 0].every(shift => Math.abs(part(colour, shift) - part(run.colour, shift)) <= 4);
  assert.deepEqual(run.colours.map(isNear), [false, true, true, false]);
});

test("what cannot be read is told in the command's words", { skip }, async () => {
  writeFileSync(join(scratch, "bad.tasklog"), "TaskLogger, cut short");
  tasklog("view", "bad.tasklog", "-o", "bad.html");
  const bad = await openPage(browser, join(scratch, "bad.html"));
  const shown = await bad.locator(".problems p").first().textContent({ timeout: 30_000 });
  assert.throws(
    () => tasklog("stats", "bad.tasklog"),
    error => error.stderr.trim() === `tasklog: ${shown}`,
  );
  await bad.close();
});

test("the browser complains of nothing", { skip }, () => assert.deepEqual(page.complaints, []));
