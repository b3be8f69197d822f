// Opens a page of `tasklog view` in Debian's Chromium, drawing without a graphics card, and prints what it takes.
// usage: node viewer.mjs NODE_MODULES PAGE ENTRIES
import { readFileSync } from "node:fs";
import { createRequire } from "node:module";
import { join, resolve } from "node:path";
import { pathToFileURL } from "node:url";

const [modules, file, entries] = process.argv.slice(2);
const { chromium } = createRequire(join(resolve(modules), "x.js"))("playwright-core");
// The picture is 1600 by 800 pixels without the toolbar, the strip and the panels at the side.
const viewport = { width: 2070, height: 886 };
const patience = 120_000;

// Pictures as fast as they can be made, not as fast as a screen shows them.
const launch = () =>
  chromium.launch({
    executablePath: "/usr/bin/chromium",
    args: ["--no-sandbox", "--disable-gpu", "--disable-frame-rate-limit", "--disable-gpu-vsync"],
  });

// Bytes that the tab alone has in memory.
async function memoryOf(browser) {
  const session = await browser.newBrowserCDPSession();
  const { processInfo } = await session.send("SystemInfo.getProcessInfo");
  const kilobytes = processInfo
    .filter(process => process.type === "renderer")
    .map(({ id }) => /^Private_Dirty:\s+(\d+)/m.exec(readFileSync(`/proc/${id}/smaps_rollup`, "utf8"))[1]);
  return Math.max(...kilobytes) * 1024;
}

// Seconds of the processor that the tab took so far. They do not count what other programs do in between.
async function secondsOf(browser) {
  const session = await browser.newBrowserCDPSession();
  const { processInfo } = await session.send("SystemInfo.getProcessInfo");
  return Math.max(...processInfo.filter(({ type }) => type === "renderer").map(({ cpuTime }) => cpuTime));
}

async function emptyPage() {
  const browser = await launch();
  const page = await browser.newPage({ viewport });
  await page.goto("about:blank");
  await page.waitForTimeout(1000);
  const memory = await memoryOf(browser);
  await browser.close();
  return memory;
}

// In the page: zooms in, pans, and zooms out again, once a frame. Milliseconds from frame to frame, and how many of
// them brought a new picture.
async function moveAround() {
  const { actions } = window.tasklog;
  const { dataset } = document.querySelector("#area");
  const first = Number(dataset.drawn);
  const frames = [];
  let last = await new Promise(requestAnimationFrame);
  const step = async act => {
    act();
    const now = await new Promise(requestAnimationFrame);
    frames.push(now - last);
    last = now;
  };
  for (const place of [0.3, 0.7]) {
    for (let i = 0; i < 60; ++i) await step(() => actions.zoom(0.87, place));
    for (let i = 0; i < 60; ++i) await step(() => actions.pan(i < 30 ? 0.02 : -0.03));
    for (let i = 0; i < 60; ++i) await step(() => actions.zoom(1 / 0.87, place));
    for (let i = 0; i < 60; ++i) await step(() => actions.pan(i < 30 ? 0.02 : -0.03));
  }
  return { frames, pictures: Number(dataset.drawn) - first };
}

// From a view to its picture, one after the other.
async function timePictures() {
  const { store, actions } = window.tasklog;
  const area = document.querySelector("#area");
  const times = [];
  for (let i = 0; i < 80; ++i) {
    const begin = performance.now();
    if (i % 40 < 20) actions.zoom(0.75, 0.3);
    else if (i % 40 < 30) actions.pan(0.05);
    else actions.zoom(1 / 0.6, 0.3);
    const wanted = `${store.now.view.from}-${store.now.view.to}`;
    while (area.dataset.view !== wanted) await new Promise(requestAnimationFrame);
    times.push(performance.now() - begin);
  }
  return times;
}

const share = (times, part) => {
  const sorted = [...times].sort((a, b) => a - b);
  return sorted[Math.min(Math.floor(sorted.length * part), sorted.length - 1)].toFixed(1);
};

const empty = await emptyPage();
const browser = await launch();
const page = await browser.newPage({ viewport });
await page.goto(pathToFileURL(resolve(file)).href, { timeout: patience, waitUntil: "commit" });
await page.waitForSelector("#area[data-drawn]", { timeout: patience });
const first = await page.evaluate(() => performance.getEntriesByName("first picture")[0].startTime);
const loading = await secondsOf(browser);
const slowest = await page.evaluate(moveAround); // while findings are looked for
await page.waitForFunction(() => !window.tasklog.store.now.isLooking, null, { timeout: patience });
await page.waitForTimeout(3000); // what is no longer needed goes
const memory = (await memoryOf(browser)) - empty;
const before = await secondsOf(browser);
const moving = await page.evaluate(moveAround);
const ofPicture = ((await secondsOf(browser)) - before) / moving.pictures;
const pictures = await page.evaluate(timePictures);
const later = (await memoryOf(browser)) - empty;
await browser.close();
console.log(`  first picture    ${(first / 1000).toFixed(2)} s, ${loading.toFixed(2)} s of the processor
  first frames     p95 ${share(slowest.frames, 0.95)} ms, at most ${share(slowest.frames, 1)} ms; ${slowest.pictures} new pictures in ${slowest.frames.length} frames
  frame            p50 ${share(moving.frames, 0.5)} ms, p95 ${share(moving.frames, 0.95)} ms; ${moving.pictures} new pictures in ${moving.frames.length} frames, ${(ofPicture * 1000).toFixed(1)} ms of the processor each
  picture of a view p50 ${share(pictures, 0.5)} ms, p95 ${share(pictures, 0.95)} ms, from the key to the picture
  memory of the tab ${(memory / entries).toFixed(1)} bytes an entry, ${(later / entries).toFixed(1)} behind ${moving.pictures + pictures.length} pictures`);
