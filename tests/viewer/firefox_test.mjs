// The page once through in Firefox: opened from a file address, drawn, every panel, a drop.
// usage: node --test firefox_test.mjs, with TASKLOG_PROGRAM, TASKLOG_FIREFOX (modules) and TASKLOG_SCRATCH
import assert from "node:assert/strict";
import { existsSync, mkdirSync, rmSync } from "node:fs";
import { createRequire } from "node:module";
import { join } from "node:path";
import { test } from "node:test";
import { pathToFileURL } from "node:url";
import { commandIn } from "./browser.mjs";

const { TASKLOG_PROGRAM: program, TASKLOG_FIREFOX: modules, TASKLOG_SCRATCH: scratch } = process.env;
const browserPath = "/usr/bin/firefox-esr";
const skip = !existsSync(browserPath)
  ? "no browser: apt-get install firefox-esr"
  : !existsSync(join(modules, "puppeteer-core"))
    ? "no browser can be driven: npm ci in tests/viewer/firefox"
    : false;
if (skip) console.log(`skipped: ${skip}`);

// The driver's own waiting makes functions of texts, which the page's policy forbids.
async function until(page, condition, ...args) {
  const end = Date.now() + 60_000;
  while (!(await page.evaluate(condition, ...args))) {
    assert.ok(Date.now() < end, `waited in vain for ${condition}`);
    await new Promise(resolve => setTimeout(resolve, 50));
  }
}

test("the page in Firefox", { skip }, async context => {
  rmSync(scratch, { recursive: true, force: true });
  mkdirSync(scratch, { recursive: true });
  const command = commandIn(program, scratch);
  const tasklog = (...args) => command(...args).stdout;
  tasklog("record", "faults/burst", "--start", "-o", "burst.tasklog");
  tasklog("view", "burst.tasklog", "-o", "burst.html");
  const puppeteer = createRequire(join(modules, "x.js"))("puppeteer-core");
  const browser = await puppeteer.launch({ browser: "firefox", executablePath: browserPath, headless: true });
  context.after(() => browser.close());
  const page = await browser.newPage();
  const complaints = [];
  page.on("pageerror", error => complaints.push(error.message));
  await page.setViewport({ width: 1400, height: 800 });
  await page.goto(pathToFileURL(join(scratch, "burst.html")).href);
  await until(page, () => document.querySelector("#area[data-drawn]") !== null);
  await until(page, () => window.tasklog.store.now.findings !== null);
  const ask = (name, keys) => page.evaluate((name, keys) => window.tasklog.client.text(name, keys), name, keys);
  assert.equal(await ask("stats", {}), tasklog("stats", "burst.tasklog", "--format", "json"));
  assert.equal(await ask("explain", { limit: 50 }), tasklog("explain", "burst.tasklog", "--format", "json"));
  const isDrawn = await page.evaluate(() => {
    const canvas = document.querySelector("#rows");
    const { data } = canvas.getContext("2d").getImageData(0, 0, canvas.width, canvas.height);
    return new Set(new Uint32Array(data.buffer)).size > 5;
  });
  assert.ok(isDrawn, "the picture has the colours of its tasks");
  for (const name of ["statistics", "histogram", "details", "entries", "rows", "compare", "findings"]) {
    await page.evaluate(name => document.querySelector(`#tab-${name}`).click(), name);
    await until(page, () => document.querySelector("#panel").children.length > 0);
  }
  await page.evaluate(() => document.querySelector(".finding-show").click());
  await until(page, () => window.tasklog.store.now.pieces !== null);
  // A drop, as the page gets it.
  await page.evaluate(() => {
    const data = new DataTransfer();
    data.items.add(new File(["TaskLogger, cut short"], "bad.tasklog"));
    document.dispatchEvent(new DragEvent("drop", { dataTransfer: data, bubbles: true }));
  });
  await until(page, () => document.querySelector(".problems p")?.textContent.includes("bad.tasklog") ?? false);
  assert.deepEqual(complaints, []);
});
