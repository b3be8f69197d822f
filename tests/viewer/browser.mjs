// Debian's browser with a page in it, opened from a file address. Node's own test runner is the only other tool.
import { spawnSync } from "node:child_process";
import { existsSync } from "node:fs";
import { createRequire } from "node:module";
import { join } from "node:path";
import { pathToFileURL } from "node:url";

export const browserPath = "/usr/bin/chromium";
export const hasBrowser = existsSync(browserPath);

export async function launch(modules) {
  const { chromium } = createRequire(join(modules, "x.js"))("playwright-core");
  return chromium.launch({ executablePath: browserPath, args: ["--no-sandbox"] });
}

// The page, once its recording is drawn. What it complains about ends up in `complaints`.
export async function openPage(browser, file, options = {}) {
  const page = await browser.newPage({ viewport: { width: 1600, height: 900 }, ...options });
  page.complaints = [];
  page.on("console", message => message.type() === "error" && page.complaints.push(message.text()));
  page.on("pageerror", error => page.complaints.push(error.message));
  await page.goto(pathToFileURL(file).href);
  return page;
}

// The command, run where the test's files are. Findings and damage are exit codes of their own: the text counts.
export const commandIn =
  (program, cwd) =>
  (...args) => {
    const { stdout, stderr, error } = spawnSync(program, args, { cwd, encoding: "utf8", maxBuffer: 1 << 28 });
    if (error) throw error;
    return { stdout, stderr };
  };

export const drawn = page => page.waitForSelector("#area[data-drawn]", { timeout: 30_000 });
export const until = (page, test) => page.waitForFunction(test, null, { timeout: 30_000 });
