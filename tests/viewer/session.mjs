// What tests of the page share: the command, a browser, pages with logs in them, and what is asked of those.
// In the environment: TASKLOG_PROGRAM, TASKLOG_NPM, TASKLOG_SCRATCH, and of some TASKLOG_PAGE or TASKLOG_FIREFOX.
import { mkdirSync, readFileSync, rmSync } from "node:fs";
import { join } from "node:path";
import { after, before } from "node:test";
import { commandIn, drawn, hasBrowser, launch, openPage, until } from "./browser.mjs";

export const { TASKLOG_PROGRAM: program, TASKLOG_NPM: modules, TASKLOG_SCRATCH: scratch } = process.env;
export const skip = hasBrowser ? false : "no browser: apt-get install chromium";
if (skip) console.log(`skipped: ${skip}`);

export const command = commandIn(program, scratch);
export const tasklog = (...args) => command(...args).stdout;
export let browser;

// One browser for all tests of a file, and the logs that `record` makes.
export function start(record) {
  before(async () => {
    if (skip) return;
    rmSync(scratch, { recursive: true, force: true });
    mkdirSync(scratch, { recursive: true });
    record();
    browser = await launch(modules);
  });
  after(() => browser?.close());
}

export async function view(...logs) {
  tasklog("view", ...logs, "-o", "page.html");
  const page = await openPage(browser, join(scratch, "page.html"), { acceptDownloads: true });
  await drawn(page);
  await until(page, () => window.tasklog.store.now.findings);
  return page;
}
export const ask = (page, name, keys) =>
  page.evaluate(([name, keys]) => window.tasklog.client.text(name, keys), [name, keys]);
export async function openPanel(page, name) {
  await page.click(`#tab-${name}`);
  await until(page, () => document.querySelector("#panel > *"));
}
export async function saved(page, caption) {
  const download = page.waitForEvent("download");
  await page.getByRole("button", { name: caption }).first().click();
  return readFileSync(await (await download).path(), "utf8");
}
