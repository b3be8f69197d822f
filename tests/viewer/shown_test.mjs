// What is hostile, damaged, empty or large, what is dropped, and whether everybody can use the page.
// usage: node --test shown_test.mjs, with the environment of session.mjs and TASKLOG_PAGE
import assert from "node:assert/strict";
import { readFileSync, writeFileSync } from "node:fs";
import { createRequire } from "node:module";
import { join } from "node:path";
import { test } from "node:test";
import { drawn, openPage, until } from "./browser.mjs";
import { fromHex, hostileLog, manyTasks, parseCsv } from "./logs.mjs";
import { ask, browser, command, modules, openPanel, saved, scratch, skip, start, tasklog, view } from "./session.mjs";

const emptyPage = process.env.TASKLOG_PAGE;
const axe = skip ? "" : readFileSync(createRequire(join(modules, "x.js")).resolve("axe-core/axe.min.js"), "utf8");

start(() => {
  tasklog("record", "demo", "--logger", "all", "--start", "--for", "600ms", "-o", "demo");
  tasklog("record", "faults/burst", "--start", "-o", "burst.tasklog");
  tasklog("cut", "burst.tasklog", "--from", "2s", "-o", "cut.tasklog");
});

test("hostile names are shown as the command shows them, and nothing of them runs", { skip }, async () => {
  writeFileSync(join(scratch, "<b>&\"'.tasklog"), hostileLog(command, scratch));
  const page = await view("<b>&\"'.tasklog");
  const names = parseCsv(tasklog("stats", "<b>&\"'.tasklog", "--format", "csv")).slice(1);
  await openPanel(page, "rows");
  await page.waitForSelector("#panel tbody tr");
  const text = await saved(page, "Save as CSV: What the picture shows");
  const rows = parseCsv(text).slice(1);
  assert.deepEqual(rows.map(row => row[0]).sort(), [names[0][0], ...names.map(row => row[8])].sort());
  assert.ok(text.includes('\r\n"=cmd()|A1'), "a name like a formula is in quotes");
  for (const panel of ["statistics", "histogram", "entries", "findings"]) await openPanel(page, panel);
  await page.waitForTimeout(300);
  assert.equal(await page.locator("img, script[src], #panel b, iframe").count(), 0);
  assert.equal(await page.evaluate(() => window.hostile), undefined);
  assert.deepEqual(page.complaints, []);
  await page.close();
});

test("empty, tiny, one-task and 512-task logs are shown", { skip }, async () => {
  writeFileSync(join(scratch, "empty.tasklog"), fromHex("valid/no_sections.hex"));
  const empty = await openPage(
    browser,
    (tasklog("view", "empty.tasklog", "-o", "empty.html"), join(scratch, "empty.html")),
  );
  await until(empty, () => window.tasklog.store.now.phase === "ready" && window.tasklog.store.now.findings);
  for (const panel of ["statistics", "histogram", "details", "entries", "rows", "compare"])
    await openPanel(empty, panel);
  assert.deepEqual(empty.complaints, []);
  await empty.close();
  for (const count of [1, 512]) {
    writeFileSync(join(scratch, "many.toml"), manyTasks(count));
    tasklog("record", "./many.toml", "--start", "--for", "200ms", "-o", `many${count}.tasklog`);
    const page = await view(`many${count}.tasklog`);
    const { tasks } = JSON.parse(tasklog("stats", `many${count}.tasklog`, "--format", "json")).lanes[0];
    const ran = tasks.filter(task => task.loadTicks !== "0" || task.cut > 0);
    assert.ok(ran.length > 0);
    assert.equal(await page.evaluate(() => window.tasklog.store.now.rows.length), ran.length + 1);
    assert.deepEqual(page.complaints, []);
    await page.close();
  }
});

test("files and folders that are dropped open; what is damaged gets the command's message", { skip }, async () => {
  const damaged = ["divisor_0", "empty", "huge_name_length", "no_events_section", "wrong_marker"];
  const files = damaged.map(name => `${name}.tasklog`);
  damaged.forEach((name, i) => writeFileSync(join(scratch, files[i]), fromHex(`invalid/${name}.hex`)));
  const page = await openPage(browser, emptyPage);
  const devtools = await page.context().newCDPSession(page);
  const drop = async paths => {
    const data = { items: [], files: paths.map(path => join(scratch, path)), dragOperationsMask: 1 };
    for (const type of ["dragEnter", "dragOver", "drop"])
      await devtools.send("Input.dispatchDragEvent", { type, x: 300, y: 300, data });
  };
  await drop(["burst.tasklog", "burst.tasklog.json"]);
  await until(page, () => window.tasklog.store.now.findings);
  assert.equal(await ask(page, "stats", {}), tasklog("stats", "burst.tasklog", "--format", "json"));
  await drop(["demo"]);
  await until(page, () => window.tasklog.store.now.recording?.lanes.length === 3);
  assert.equal(await ask(page, "stats", {}), tasklog("stats", "demo", "--format", "json"));
  await drop(files);
  await until(page, count => window.tasklog.store.now.problems.length === 5);
  const told = await page.locator(".problems p").allTextContents();
  const { stderr } = command("stats", ...files);
  assert.deepEqual(
    told.sort(),
    stderr
      .trim()
      .split("\n")
      .map(line => line.replace(/^tasklog: /, ""))
      .sort(),
  );
  await page.close();
});

for (const colorScheme of ["light", "dark"])
  test(`axe finds no violation in ${colorScheme}, and a report is printed`, { skip }, async () => {
    tasklog("view", "burst.tasklog", "cut.tasklog", "-o", "axe.html");
    const page = await openPage(browser, join(scratch, "axe.html"), { colorScheme, bypassCSP: true });
    await drawn(page);
    await page.addScriptTag({ content: axe });
    // What is not about colours is the same in both.
    const rules =
      colorScheme === "light" ? {} : { runOnly: { type: "rule", values: ["color-contrast", "link-in-text-block"] } };
    const check = async where => {
      const { violations } = await page.evaluate(rules => window.axe.run(rules), rules);
      assert.deepEqual(
        violations.map(one => [one.id, one.nodes.map(node => node.html.slice(0, 120))]),
        [],
        where,
      );
    };
    await page.focus(".finding-show");
    await page.keyboard.press("Enter");
    await until(page, () => window.tasklog.store.now.pieces && document.querySelector(".finding.shown"));
    assert.equal(await page.evaluate(() => document.activeElement.className), "finding-show", "the focus stays");
    await check("findings");
    await page.evaluate(async () => {
      const { store, actions } = window.tasklog;
      await actions.pickInView(
        0,
        store.now.recording.lanes[0].tasks.findIndex(task => task.name === "PathPlanner"),
      );
    });
    for (const panel of ["statistics", "histogram", "details", "entries", "rows", "compare"]) {
      await openPanel(page, panel);
      await page.waitForTimeout(150);
      await check(panel);
    }
    await page.click("text=Side by side");
    await page.waitForSelector("#panel tbody tr");
    await check("side by side");
    await page.keyboard.press("?");
    await check("keys");
    await page.keyboard.press("Escape");
    await page.evaluate(() => dispatchEvent(new Event("beforeprint")));
    await page.emulateMedia({ media: "print", colorScheme });
    const printed = await page.locator("#report").innerText();
    const { findings } = JSON.parse(tasklog("explain", "burst.tasklog", "--format", "json"));
    for (const text of [findings[0].verdict, "burst.tasklog", "19.99", "preemption", "VisionTrigger"])
      assert.ok(printed.includes(text), text);
    const paper = await page.evaluate(() => getComputedStyle(document.body).backgroundColor);
    assert.equal(paper, "rgb(255, 255, 255)");
    assert.equal(await page.locator("#toolbar").isVisible(), false);
    await page.close();
  });
