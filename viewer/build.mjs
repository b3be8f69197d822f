// Bundles the page into one file: node build.mjs BRIDGE_FOLDER NODE_MODULES OUTPUT
import { createHash } from "node:crypto";
import { mkdirSync, readFileSync, renameSync, writeFileSync } from "node:fs";
import { createRequire } from "node:module";
import { dirname, join, resolve } from "node:path";
import { fileURLToPath } from "node:url";
import { gzipSync } from "node:zlib";

const [bridge, modules, output] = process.argv.slice(2).map(path => resolve(path));
const here = dirname(fileURLToPath(import.meta.url));
const esbuild = createRequire(join(modules, "x.js"))("esbuild");

function bundle(entry, options = {}) {
  const result = esbuild.buildSync({
    entryPoints: [join(here, "src", entry)],
    bundle: true,
    minify: true,
    format: "iife",
    target: ["chrome110", "firefox115"],
    write: false,
    charset: "utf8",
    legalComments: "none",
    logLevel: "warning",
    ...options,
  });
  return result.outputFiles[0].text;
}

const hash = text => `'sha256-${createHash("sha256").update(text).digest("base64")}'`;
// A script element ends at the first of these, whatever stands around it.
function inElement(text) {
  if (/<\/script|<!--/i.test(text)) throw new Error("a script would end its element early");
  return text;
}

const script = inElement(bundle("main.ts"));
const worker = inElement(
  bundle("worker/worker.ts", {
    alias: { bridge: join(bridge, "tasklog_bridge.js") },
    external: ["fs", "path", "crypto"],
  }),
);
const style = readFileSync(join(here, "style.css"), "utf8");
const parts = {
  script,
  worker,
  style,
  wasm: gzipSync(readFileSync(join(bridge, "tasklog_bridge.wasm")), { level: 9 }).toString("base64"),
  // Nothing is fetched, from nowhere: only these very scripts run, and the module in the worker.
  csp:
    `default-src 'none'; script-src ${hash(script)} 'wasm-unsafe-eval'; worker-src blob:; style-src ${hash(style)}; ` +
    "connect-src 'none'; img-src 'none'; base-uri 'none'; form-action 'none'",
};
const page = readFileSync(join(here, "page.html"), "utf8").replace(/@(\w+)@/g, (_, name) => parts[name]);
mkdirSync(dirname(output), { recursive: true });
writeFileSync(`${output}.new`, page);
renameSync(`${output}.new`, output);
