// Going from place to place on the page: links, keys, the strip, search, marks, gaps, fingers.
// usage: node --test moving_test.mjs, with TASKLOG_PROGRAM, TASKLOG_NPM and TASKLOG_SCRATCH in the environment
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { mkdirSync, rmSync } from "node:fs";
import { join } from "node:path";
import { after, before, test } from "node:test";
import { drawn, hasBrowser, launch, openPage, until } from "./browser.mjs";

const { TASKLOG_PROGRAM: program, TASKLOG_NPM: modules } = process.env;
const scratch = `${process.env.TASKLOG_SCRATCH}-moving`;
const skip = hasBrowser ? false : "no browser: apt-get install chromium";
if (skip) console.log(`skipped: ${skip}`);
const tasklog = (...args) => execFileSync(program, args, { cwd: scratch, encoding: "utf8", stdio: "pipe" });

let browser;
let page;
let shown; // [from, to] at first

before(async () => {
  if (skip) return;
  rmSync(scratch, { recursive: true, force: true });
  mkdirSync(scratch, { recursive: true });
  for (const [target, folder, length] of [
    ["demo", "demo", "2600ms"], // for two of its timing issues
    ["faults/lost-records", "lost", "1s"],
  ]) {
    tasklog("record", target, "--logger", "all", "--start", "--for", length, "-o", folder);
    tasklog("view", folder, "-o", `${folder}.html`);
  }
  browser = await launch(modules);
  page = await openPage(browser, join(scratch, "demo.html"));
  await drawn(page);
  shown = await view();
});
after(() => browser?.close());

const view = (of = page) => of.evaluate(() => Object.values(window.tasklog.store.now.view).map(String));
const state = (key, of = page) => of.evaluate(key => window.tasklog.store.now[key], key);
async function startAnew() {
  await page.evaluate(() => {
    window.tasklog.actions.clear();
    window.tasklog.actions.showAll();
  });
  await page.mouse.move(800, 500);
}

test("a link opens at its moment, and the address follows the view", { skip }, async () => {
  const [from, to] = [BigInt(shown[0]) + 1_000_000n, BigInt(shown[0]) + 1_500_000n].map(String);
  const other = await browser.newPage();
  const address = `file://${join(scratch, "demo.html")}`;
  await other.goto(`${address}#from=${from}&to=${to}&sort=load&filter=loop&time=ticks`);
  await drawn(other);
  assert.deepEqual(await view(other), [from, to]);
  assert.deepEqual(
    [await state("order", other), await state("filter", other), await state("inTicks", other)],
    ["load", "loop", true],
  );
  await other.evaluate(() => window.tasklog.actions.setOrder("name"));
  await other.waitForFunction(() => location.hash.includes("sort=name"), null, { timeout: 5000 });
  assert.match(other.url(), new RegExp(`#from=${from}&to=${to}&sort=name&filter=loop&time=ticks$`));
  await other.evaluate(() => (location.hash = "#from=12&to=junk&sort=mood&group=7"));
  await other.waitForFunction(() => window.tasklog.store.now.order === "priority", null, { timeout: 5000 });
  assert.deepEqual(await view(other), [from, to]); // nonsense moves nothing
  await other.close();
});

test("W keeps the moment below the pointer, D goes later, 0 shows all", { skip }, async () => {
  await startAnew();
  const at = await page.evaluate(() => document.querySelector("#area").getBoundingClientRect());
  const share = (800 - at.x - 232) / (at.width - 232);
  const moment = ([from, to]) => Number(BigInt(from) - BigInt(shown[0])) + share * Number(BigInt(to) - BigInt(from));
  const all = moment(shown);
  for (let i = 0; i < 5; ++i) await page.keyboard.press("w");
  const near = await view();
  assert.ok(Number(near[1]) - Number(near[0]) < (Number(shown[1]) - Number(shown[0])) / 4);
  assert.ok(Math.abs(moment(near) - all) < 1e-3 * (Number(shown[1]) - Number(shown[0])));
  await page.keyboard.press("d");
  assert.ok(BigInt((await view())[0]) > BigInt(near[0]));
  await page.keyboard.press("0");
  assert.deepEqual(await view(), shown);
});

test("a drag on the strip moves the part that is shown, as long as it was", { skip }, async () => {
  await startAnew();
  for (let i = 0; i < 8; ++i) await page.keyboard.press("w");
  const [from, to] = await view();
  const strip = await page.locator("#map").boundingBox();
  await page.mouse.move(strip.x + 400, strip.y + 20);
  await page.mouse.down();
  await page.mouse.move(strip.x + 232 + (strip.width - 232) * 0.9, strip.y + 20);
  await page.mouse.up();
  const [later, end] = (await view()).map(BigInt);
  assert.equal(end - later, BigInt(to) - BigInt(from));
  const middle = Number((later + end) / 2n - BigInt(shown[0])) / Number(BigInt(shown[1]) - BigInt(shown[0]));
  assert.ok(Math.abs(middle - 0.9) < 0.01, `${middle}`);
});

test("M sets A, then B, and tells their distance", { skip }, async () => {
  await startAnew();
  await page.keyboard.press("m");
  await page.mouse.move(900, 500);
  await page.keyboard.press("m");
  const [a, b] = await page.evaluate(() => window.tasklog.store.now.pinned.map(Number));
  const width = (await page.locator("#area").boundingBox()).width - 232;
  const expected = (100 / width) * (Number(shown[1]) - Number(shown[0]));
  assert.ok(Math.abs(b - a - expected) < expected * 0.01);
  assert.match(await page.locator("#live").textContent(), /^Mark B at .* ms from A$/);
  await page.keyboard.press("Escape");
  assert.deepEqual(await state("pinned"), []);
});

test("search finds names in any case, and Enter goes from run to run", { skip }, async () => {
  await startAnew();
  await page.keyboard.press("/");
  await page.keyboard.type("positionl");
  await page.waitForSelector("#search-matches [aria-selected=true]");
  assert.equal(await page.locator("#search-matches li span").first().textContent(), "PositionLoop");
  const picked = async press => {
    await page.evaluate(() => (window.before = window.tasklog.store.now.picked));
    await page.keyboard.press(press);
    await until(page, () => window.tasklog.store.now.picked !== window.before);
    return page.evaluate(() => window.tasklog.store.now.picked);
  };
  const first = await picked("Enter");
  const second = await picked("Enter");
  assert.equal(second.index, first.index + 1);
  assert.equal((await picked("Shift+Enter")).index, first.index);
  await page.keyboard.press("Escape");
  assert.equal((await picked(".")).index, second.index); // the keys go on from there
  assert.equal((await picked(",")).index, first.index);
});

test("] and [ go over the timing issues that the log has", { skip }, async () => {
  await startAnew();
  const issues = ["kernel1", "kernel2", "scheduler"]
    .flatMap(lane => JSON.parse(tasklog("list", `demo/${lane}.tasklog`, "--type", "issue", "--format", "json")))
    .map(entry => BigInt(entry.ticks))
    .sort((a, b) => (a < b ? -1 : 1));
  const walk = await page.evaluate(async () => {
    const { store, actions } = window.tasklog;
    const times = [];
    actions.pick({ kind: "issue", from: `${store.now.view.from}`, lane: 0, task: null, row: -1, title: "" });
    for (let last = null; last !== store.now.picked;) {
      last = store.now.picked;
      await actions.stepIssue(true);
      if (last !== store.now.picked) times.push(store.now.picked.from);
    }
    await actions.stepIssue(false);
    return [...times, store.now.picked.from];
  });
  const different = [...new Set(issues)];
  assert.ok(different.length > 1);
  assert.deepEqual(walk.map(BigInt), [...different, different[different.length - 2]]);
});

test("steps go over every place of one testpoint, there and back", { skip }, async () => {
  const lanes = await page.evaluate(() => window.tasklog.store.now.recording.lanes);
  for (const [lane, { name, tasks, subjects }] of lanes.entries()) {
    const list = JSON.parse(tasklog("list", `demo/${name}.tasklog`, "--type", "testpoint", "--format", "json"));
    for (const [i, subject] of subjects.entries()) {
      if (subject.kind !== "testpoint") continue;
      const places = new Set(list.filter(entry => entry.subject === subject.name).map(entry => entry.ticks));
      const walk = await page.evaluate(
        async ([lane, subject]) => {
          const times = [[], []];
          for (const [way, at] of [18_446_744_073_709_551_615n, 0n].entries())
            for (let found = { from: at }; found;) {
              const keys = { group: 0, kind: "testpoint", lane, subject, at: BigInt(found.from), forward: way === 1 };
              found = (await window.tasklog.client.call("step", keys)).json;
              if (found) times[way].push(found.from);
            }
          return times;
        },
        [lane, tasks.length + i],
      );
      assert.deepEqual(walk[1], [...places]);
      assert.deepEqual(walk[0].reverse(), [...places]);
    }
  }
});

test("two fingers that part zoom in between them", { skip }, async () => {
  await startAnew();
  const session = await page.context().newCDPSession(page);
  const touch = (type, ...xs) =>
    session.send("Input.dispatchTouchEvent", { type, touchPoints: xs.map((x, id) => ({ x, y: 400, id })) });
  await touch("touchStart", 600);
  await touch("touchStart", 600, 700);
  await touch("touchMove", 500, 800);
  await touch("touchEnd");
  const [from, to] = await view();
  const ratio = Number(BigInt(to) - BigInt(from)) / Number(BigInt(shown[1]) - BigInt(shown[0]));
  assert.ok(ratio > 0.3 && ratio < 0.37, `${ratio}`);
  assert.equal(await state("selection"), null);
});

test("a gap is hatched over all rows, and says what it is", { skip }, async () => {
  const lost = await openPage(browser, join(scratch, "lost.html"));
  await drawn(lost);
  const { fromTicks: from, toTicks: to } = JSON.parse(tasklog("info", "lost", "--json"))[0].gaps[0];
  const colours = await lost.evaluate(
    async ({ from, to }) => {
      const { store, actions } = window.tasklog;
      const length = BigInt(to) - BigInt(from);
      actions.show({ from: BigInt(from) - length, to: BigInt(to) + length }); // its middle third
      const wanted = `${store.now.view.from}-${store.now.view.to}`;
      while (document.querySelector("#area").dataset.view !== wanted) await new Promise(requestAnimationFrame);
      const context = document.querySelector("#rows").getContext("2d");
      const width = context.canvas.width - 232;
      return store.now.rows.map(row => {
        const { data } = context.getImageData(232 + width * 0.5, 30 + row.top + 2, 16, 1);
        return new Set(new Uint32Array(data.buffer)).size;
      });
    },
    { from, to },
  );
  assert.ok(
    colours.every(count => count > 2),
    `${colours}`,
  );
  await lost.mouse.move(700, 110);
  await until(lost, () => document.querySelector(".tip").textContent.startsWith("records lost"));
  await lost.close();
});

test("the browser complains of nothing", { skip }, () => assert.deepEqual(page.complaints, []));
