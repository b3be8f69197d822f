// The panels at the side, held against what the command says of the same files.
// usage: node --test panels_test.mjs, with the environment of session.mjs
import assert from "node:assert/strict";
import { test } from "node:test";
import { until } from "./browser.mjs";
import { parseCsv } from "./logs.mjs";
import { ask, openPanel, saved, skip, start, tasklog, view } from "./session.mjs";

start(() => {
  tasklog("record", "demo", "--logger", "all", "--start", "--for", "600ms", "-o", "demo");
  tasklog("record", "overload", "--logger", "all", "--start", "--for", "600ms", "-o", "overload");
  tasklog("record", "faults/burst", "--start", "-o", "burst.tasklog");
  tasklog("record", "faults/burst#3", "--start", "-o", "later.tasklog");
  tasklog("record", "faults/lost-records", "--start", "--for", "5s", "-o", "lost.tasklog");
  tasklog("cut", "later.tasklog", "--from", "2s", "-o", "cut.tasklog");
});

for (const log of ["demo", "overload", "burst.tasklog"]) {
  test(`${log}: rows, numbers and findings are the command's`, { skip }, async () => {
    const page = await view(log);
    const stats = JSON.parse(tasklog("stats", log, "--format", "json"));
    await openPanel(page, "rows");
    await page.waitForSelector("#panel tbody tr");
    const rows = parseCsv(await saved(page, "Save as CSV: What the picture shows"));
    const whole = (lane, task) => lane.tasks.find(one => one.name === task);
    const expected = stats.lanes.flatMap(lane => [
      lane.lane,
      ...lane.tasks.filter(task => task.loadTicks !== "0" || task.cut > 0).map(task => task.name),
    ]);
    assert.deepEqual(
      rows.slice(1).map(row => row[0]),
      expected,
    );
    assert.deepEqual(rows[0].slice(0, 4), ["row", "load", "Runs", "Jobs"]);
    if (log === "burst.tasklog") {
      const planner = rows.find(row => row[0] === "PathPlanner");
      const { load, jobs, cut } = whole(stats.lanes[0], "PathPlanner");
      assert.equal(Number(planner[3]), jobs + cut);
      assert.ok(Math.abs(Number(planner[1]) - load) < 1e-9);
    }
    // The table's CSV, of all and of what the keyboard selects.
    await openPanel(page, "statistics");
    assert.equal(await saved(page, /^Save as CSV/), tasklog("stats", log, "--format", "csv"));
    await page.evaluate(() => window.tasklog.actions.zoom(0.3, 0.4));
    await page.focus("#area");
    await page.keyboard.press("x");
    const { from, to } = await page.evaluate(() => {
      const { from, to } = window.tasklog.store.now.selection;
      return { from: `${from}`, to: `${to}` };
    });
    await until(page, () => {
      const { selection, stats } = window.tasklog.store.now;
      return stats?.lanes.every(lane => BigInt(lane.startTicks) >= selection.from);
    });
    const range = ["--from", from, "--to", to];
    assert.equal(await saved(page, /^Save as CSV/), tasklog("stats", log, "--format", "csv", ...range));
    assert.equal(await ask(page, "stats", { from, to }), tasklog("stats", log, "--format", "json", ...range));
    // Findings, and the parts of the first one's job where they lie.
    const explained = tasklog("explain", log, "--format", "json", "--limit", "50");
    assert.equal(await ask(page, "explain", { limit: 50 }), explained);
    const { findings } = JSON.parse(explained);
    await openPanel(page, "findings");
    assert.deepEqual(
      await page.locator(".verdict").allTextContents(),
      findings.map(finding => finding.verdict),
    );
    if (log === "burst.tasklog") await checkFinding(page, findings[0]);
    assert.deepEqual(page.complaints, []);
    await page.close();
  });
}

async function checkFinding(page, finding) {
  await page.locator(".finding-show").first().click();
  await until(page, () => window.tasklog.store.now.pieces);
  const { pieces, shownJob, tasks } = await page.evaluate(() => {
    const { pieces, shownJob, recording } = window.tasklog.store.now;
    const text = { from: `${shownJob.from}`, to: `${shownJob.to}` };
    return { pieces: pieces.list, shownJob: text, tasks: recording.lanes[0].tasks.map(task => task.name) };
  });
  assert.deepEqual(shownJob, { from: finding.job.activationTicks, to: finding.job.completionTicks });
  const sums = new Map();
  for (const { kind, task, from, to } of pieces) {
    const key = `${kind} ${kind === "dispatch" ? null : tasks[task]}`;
    sums.set(key, (sums.get(key) ?? 0n) + BigInt(to) - BigInt(from));
  }
  const parts = finding.parts.filter(part => part.actualTicks !== "0");
  assert.deepEqual([...sums].sort(), parts.map(part => [`${part.kind} ${part.task}`, BigInt(part.actualTicks)]).sort());
}

test("a bar of the histogram shows where its values are", { skip }, async () => {
  const page = await view("burst.tasklog");
  const [lane] = JSON.parse(tasklog("stats", "burst.tasklog", "--format", "json")).lanes;
  const keysOf = (task, quantity) => ({ lane: 0, task, quantity });
  const tasks = await page.evaluate(() => window.tasklog.store.now.recording.lanes[0].tasks.map(task => task.name));
  for (const quantity of ["execution", "response", "startLatency", "activationInterval", "run"])
    for (const { name, [quantity]: summary } of lane.tasks) {
      const keys = keysOf(tasks.indexOf(name), quantity);
      const { bins } = JSON.parse(await ask(page, "histogram", { ...keys, bins: 12 }));
      const count = bins.reduce((sum, bin) => sum + bin.count, 0);
      assert.equal(count, summary.count);
      if (count === 0) continue;
      const last = bins[bins.length - 1];
      assert.deepEqual([bins[0].fromTicks, last.toTicks], [summary.min, summary.max]);
      const places = JSON.parse(await ask(page, "places", { ...keys, least: last.fromTicks, most: last.toTicks }));
      assert.equal(places.count, last.count);
      for (const { ticks } of places.places) assert.ok(BigInt(ticks) >= BigInt(last.fromTicks), `${name} ${quantity}`);
      const isAt = place => place.ticks === summary.max && place.from === summary.maxAtTicks;
      if (quantity !== "activationInterval") assert.ok(places.places.some(isAt), `${name} ${quantity}`);
    }
  await openPanel(page, "histogram");
  await page.waitForSelector(".column");
  await page.locator(".column").first().click({ force: true });
  await until(page, () => window.tasklog.store.now.places?.spans.length > 0);
  await page.close();
});

test("the list of entries follows the picture and leads it, with few elements", { skip }, async () => {
  const page = await view("burst.tasklog");
  const listed = parseCsv(tasklog("list", "burst.tasklog", "--format", "csv")).slice(1);
  const shown = () =>
    page.evaluate(() =>
      [...document.querySelectorAll(".entry:not(.head)")].map(row => [
        Number(row.getAttribute("aria-rowindex")) - 2,
        ...[...row.querySelectorAll("[role=cell]")].map(cell => cell.textContent),
      ]),
    );
  const check = async at => {
    await page.waitForSelector(`.entry[aria-rowindex="${at + 2}"]`);
    const rows = await shown();
    assert.ok(rows.length > 20 && rows.length < 80, `${rows.length} rows`);
    for (const [index, time, type, subject, running] of rows) {
      const [, seconds, ...rest] = listed[index];
      assert.deepEqual([time, type, subject, running], [`${seconds} s`, rest[0], rest[2], rest[4]]);
    }
  };
  await openPanel(page, "entries");
  await check(0);
  await page.focus(".entries");
  await page.keyboard.press("End");
  await check(listed.length - 1);
  const middle = listed[Math.floor(listed.length / 2)][0];
  await page.evaluate(from => {
    window.tasklog.actions.show({ from: BigInt(from), to: BigInt(from) + 100_000n });
  }, middle);
  const first = listed.findIndex(row => row[0] === middle);
  await check(first + 3);
  await page.locator(".entry:not(.head) button").nth(20).click();
  const chosen = BigInt(listed[first + 20][0]);
  const view_ = await page.evaluate(() => Object.values(window.tasklog.store.now.view).map(String));
  assert.ok(chosen >= BigInt(view_[0]) && chosen <= BigInt(view_[1]));
  await page.keyboard.press("Escape");
  const csv = saved(page, /^Save as CSV/);
  assert.equal(await csv, tasklog("list", "burst.tasklog", "--format", "csv", "--from", view_[0], "--to", view_[1]));
  await page.close();
});

test(
  "two recordings have one distance from their starts, and the difference that tasklog diff tells",
  { skip },
  async () => {
    const page = await view("burst.tasklog", "cut.tasklog");
    await openPanel(page, "compare");
    await page.click("text=Side by side");
    await page.waitForSelector("#area2[data-drawn]");
    await page.waitForSelector("#panel tbody tr");
    const diff = format => tasklog("diff", "burst.tasklog", "cut.tasklog", "--format", format);
    assert.equal(await ask(page, "diff", { before: 0, after: 1 }), diff("json"));
    assert.equal(await saved(page, /^Save as CSV/), diff("csv"));
    const distances = () =>
      page.evaluate(() => {
        const { store, second } = window.tasklog;
        const { groups } = store.now.recording;
        const of = (range, group) => [`${range.from - BigInt(group.from)}`, `${range.to - BigInt(group.from)}`];
        return [of(store.now.view, groups[0]), of(second.now.view, groups[store.now.compared.group])];
      });
    const box = await page.locator("#area2").boundingBox();
    await page.evaluate(() => window.tasklog.actions.zoom(0.1, 0.5));
    await page.mouse.move(box.x + 600, box.y + 150);
    const before = await distances();
    await page.mouse.wheel(200, 0); // in the lower picture
    await until(page, from => `${window.tasklog.store.now.view.from}` !== from);
    await page.waitForTimeout(200);
    const [above, below] = await distances();
    assert.deepEqual(above, below);
    assert.notDeepEqual(above, before[0]);
    assert.notEqual(JSON.parse(diff("json")).before[0].startTicks, JSON.parse(diff("json")).after[0].startTicks);
    // A selection is the same stretch of each.
    await page.evaluate(() => window.tasklog.actions.selectView());
    await until(
      page,
      () => window.tasklog.store.now.stats?.lanes[1].startTicks === `${window.tasklog.second.now.view.from}`,
    );
    await page.close();
  },
);

test("lost records are told wherever they are", { skip }, async () => {
  const page = await view("lost.tasklog");
  const [lane] = JSON.parse(tasklog("stats", "lost.tasklog", "--format", "json")).lanes;
  assert.ok(lane.gaps.length > 1);
  const { fromTicks, toTicks } = lane.gaps[1];
  const length = BigInt(toTicks) - BigInt(fromTicks);
  const window = { from: `${BigInt(fromTicks) - length}`, length: `${3n * length}`, width: 900 };
  const hit = JSON.parse(await ask(page, "hit", { ...window, x: 450, y: 20 }));
  assert.deepEqual([hit.kind, hit.from, hit.to], ["gap", fromTicks, toTicks]);
  await openPanel(page, "rows");
  await page.waitForSelector("#panel tbody tr");
  const rows = parseCsv(await saved(page, "Save as CSV: What the picture shows"));
  assert.equal(Number(rows[1][7]), lane.gaps.length);
  await page.close();
});
