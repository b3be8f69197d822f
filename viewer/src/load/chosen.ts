// Files that are dropped on the page or chosen: TaskLog files with their metadata, or the folder of a recording.
import type { FileToOpen } from "../worker/protocol";

export interface Chosen {
  arguments: string[];
  files: FileToOpen[];
}

interface Found {
  path: string;
  file: File;
}

function filesUnder(entry: FileSystemEntry): Promise<Found[]> {
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

type Folder = FileSystemDirectoryHandle & { values(): AsyncIterable<FileSystemHandle> };

async function filesOf(handle: FileSystemHandle, folder: string): Promise<Found[]> {
  const path = folder + handle.name;
  if (handle.kind === "file") return [{ path, file: await (handle as FileSystemFileHandle).getFile() }];
  const found: Found[] = [];
  for await (const one of (handle as Folder).values()) found.push(...(await filesOf(one, `${path}/`)));
  return found;
}

const isLog = (path: string): boolean => path.endsWith(".tasklog");
const folderOf = (path: string): string => path.slice(0, Math.max(path.lastIndexOf("/"), 0));

// The folder where there is metadata of a recording, otherwise each file; one of any name may be a log.
function chosen(found: Found[]): Chosen {
  const files = found.map(({ path, file }) => ({ path, bytes: file, size: file.size }));
  const recordings = new Set(
    found.filter(({ path }) => /\/recording\.json$/.test(path)).map(({ path }) => folderOf(path)),
  );
  const logs = found.map(({ path }) => path).filter(path => !path.endsWith(".json") && !recordings.has(folderOf(path)));
  const wanted = logs.some(isLog) ? logs.filter(isLog) : recordings.size > 0 ? [] : logs;
  return { arguments: [...recordings, ...wanted.sort()], files };
}

type Item = DataTransferItem & { getAsFileSystemHandle?(): Promise<FileSystemHandle | null> };

// Chromium reads no entries for a page from a file address, but handles; Firefox has entries alone. Either must be
// asked for before the event is over.
export async function ofDrop(data: DataTransfer): Promise<Chosen> {
  const items: Item[] = [...data.items].filter(item => item.kind === "file");
  const plain = [...data.files];
  const handles = items.map(item => item.getAsFileSystemHandle?.());
  const entries = items.map(item => item.webkitGetAsEntry());
  const lists = await Promise.all(
    items.map(async (_, i) => {
      const handle = await handles[i]?.catch(() => null);
      if (handle) return filesOf(handle, "");
      const entry = entries[i];
      if (entry) return filesUnder(entry);
      const file = plain[i];
      return file ? [{ path: file.name, file }] : [];
    }),
  );
  return chosen(lists.flat());
}

export function ofChooser(list: FileList): Chosen {
  return chosen([...list].map(file => ({ path: file.webkitRelativePath || file.name, file })));
}
