// Files that are dropped on the page or chosen: TaskLog files with their metadata, or the folder of a recording.
import type { FileToOpen } from "../worker/protocol";

export interface Chosen {
  arguments: string[];
  files: FileToOpen[];
}

function filesUnder(entry: FileSystemEntry): Promise<{ path: string; file: File }[]> {
  if (entry.isFile)
    return new Promise((resolve, reject) =>
      (entry as FileSystemFileEntry).file(file => resolve([{ path: entry.fullPath.slice(1), file }]), reject),
    );
  const reader = (entry as FileSystemDirectoryEntry).createReader();
  const readAll = (found: FileSystemEntry[]): Promise<FileSystemEntry[]> =>
    new Promise<FileSystemEntry[]>((resolve, reject) => reader.readEntries(resolve, reject)).then(some =>
      some.length === 0 ? found : readAll([...found, ...some]),
    ); // they come in portions
  return readAll([])
    .then(entries => Promise.all(entries.map(filesUnder)))
    .then(lists => lists.flat());
}

const isLog = (path: string): boolean => path.endsWith(".tasklog");
const folderOf = (path: string): string => path.slice(0, Math.max(path.lastIndexOf("/"), 0));

// The folder where there is metadata of a recording, otherwise each file; one of any name may be a log.
function chosen(found: { path: string; file: File }[]): Chosen {
  const files = found.map(({ path, file }) => ({ path, bytes: file }));
  const recordings = new Set(
    found.filter(({ path }) => /\/recording\.json$/.test(path)).map(({ path }) => folderOf(path)),
  );
  const logs = found.map(({ path }) => path).filter(path => !path.endsWith(".json") && !recordings.has(folderOf(path)));
  const wanted = logs.some(isLog) ? logs.filter(isLog) : recordings.size > 0 ? [] : logs;
  return { arguments: [...recordings, ...wanted.sort()], files };
}

export async function ofDrop(data: DataTransfer): Promise<Chosen> {
  const entries = [...data.items].map(item => item.webkitGetAsEntry()).filter(entry => entry !== null);
  return chosen((await Promise.all(entries.map(filesUnder))).flat());
}

export function ofChooser(list: FileList): Chosen {
  return chosen([...list].map(file => ({ path: file.webkitRelativePath || file.name, file })));
}
