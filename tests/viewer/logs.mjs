// Logs that no controller writes, and CSV.
import { readFileSync, writeFileSync } from "node:fs";
import { dirname, join } from "node:path";
import { fileURLToPath } from "node:url";

const data = join(dirname(fileURLToPath(import.meta.url)), "..", "data");

// Bytes of a file in tests/data: hexadecimal, text in quotes, comments.
export function fromHex(name) {
  const words = readFileSync(join(data, name), "utf8")
    .replace(/#.*$/gm, "")
    .match(/"[^"]*"|[0-9A-F]{2}/g);
  return Buffer.concat(
    (words ?? []).map(word => (word[0] === '"' ? Buffer.from(word.slice(1, -1)) : Buffer.from(word, "hex"))),
  );
}

const header =
  'clock = "stepped"\nstep = "100ms"\nseed = 1\n[timer]\nresolution_ns = 100.0\n[scheduler]\nslots = 60000\n';
const task = (name, i) =>
  `[[scheduler.task]]\nname = "${name}"\npriority = ${20 + (i % 200)}\nperiod = "50ms"\nrun = "60us"\n`;

export const manyTasks = count => header + Array.from({ length: count }, (_, i) => task(`Task${i}`, i)).join("");

const hostile = [
  Buffer.from("<img src=x onerror=window.hostile=1>"),
  Buffer.from("</script><script>hostile=1</script>"),
  Buffer.from("=cmd()|A1"),
  Buffer.from('a,"b"\r\nc\u001b[31m'),
  Buffer.from("\u202eevil\u202c \u05d0\u05d1\u200f"),
  Buffer.from("${hostile} {{7*7}} &lt;b&gt; \\x41"),
  Buffer.from(Array.from({ length: 255 }, (_, i) => i + 1)),
];

const stored = name => {
  const length = Buffer.alloc(4);
  length.writeUInt32LE(name.length + 1);
  return Buffer.concat([length, name, Buffer.alloc(1)]).toString("latin1"); // docs/file-format.md, a string
};

// A recording whose names were exchanged for those above.
export function hostileLog(command, scratch) {
  const plain = hostile.map((_, i) => `Plain${i}`);
  writeFileSync(join(scratch, "plain.toml"), header + plain.map(task).join(""));
  const { stderr } = command("record", "./plain.toml", "--start", "--for", "200ms", "-o", "plain.tasklog");
  let bytes = readFileSync(join(scratch, "plain.tasklog"), "latin1");
  hostile.forEach((name, i) => {
    const before = stored(Buffer.from(plain[i]));
    if (!bytes.includes(before)) throw new Error(`no task ${plain[i]}: ${stderr}`);
    bytes = bytes.replaceAll(before, () => stored(name));
  });
  return Buffer.from(bytes, "latin1");
}

// RFC 4180.
export function parseCsv(text) {
  const rows = [];
  for (const line of text.match(/(?:"(?:[^"]|"")*"|[^"\r\n])*\r\n/g) ?? []) {
    const fields = `,${line.slice(0, -2)}`.match(/,(?:"(?:[^"]|"")*"|[^,]*)/g);
    rows.push(fields.map(field => (field[1] === '"' ? field.slice(2, -1).replaceAll('""', '"') : field.slice(1))));
  }
  return rows;
}
