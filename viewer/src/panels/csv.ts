// Tables as CSV: RFC 4180, so a comma, a quote or a line's end stands in quotes. A name that a spreadsheet might take
// for a formula is in quotes, too, and otherwise as it is: what changes names is no copy of them.
const needsQuotes = /[",\r\n]|^[=+\-@\t]/;

const field = (text: string): string =>
  needsQuotes.test(text) && !/^-?[\d.]+(e[+-]?\d+)?$/i.test(text) ? `"${text.replaceAll('"', '""')}"` : text;

export const csvOf = (rows: string[][]): string => rows.map(row => `${row.map(field).join(",")}\r\n`).join("");

export function save(text: string, name: string): void {
  const link = document.createElement("a");
  link.href = URL.createObjectURL(new Blob([text], { type: "text/csv;charset=utf-8" }));
  link.download = `${name}.csv`;
  link.click();
  setTimeout(() => URL.revokeObjectURL(link.href), 10_000);
}

// Where a page from a file may not use the clipboard, a selection can still be copied.
export async function copy(text: string): Promise<void> {
  try {
    await navigator.clipboard.writeText(text);
  } catch {
    const area = document.createElement("textarea");
    area.value = text;
    document.body.append(area);
    area.select();
    const isDone = document.execCommand("copy");
    area.remove();
    if (!isDone) throw new Error("the browser does not let this page copy; save the table instead");
  }
}
