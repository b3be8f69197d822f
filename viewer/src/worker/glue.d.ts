// The script that emscripten writes beside the module.
declare module "bridge" {
  interface Files {
    mkdirTree(path: string): void;
    chdir(path: string): void;
    open(path: string, flags: string): unknown;
    write(stream: unknown, bytes: Uint8Array, offset: number, length: number): number;
    close(stream: unknown): void;
    truncate(path: string, size: number): void;
    lookupPath(path: string): { node: { contents: Uint8Array | null } };
    unlink(path: string): void;
  }
  export interface Bridge {
    FS: Files;
    HEAP32: Int32Array;
    HEAPU8: Uint8Array;
    HEAPF32: Float32Array;
    stringToUTF8(text: string, place: number, size: number): void;
    lengthBytesUTF8(text: string): number;
    _malloc(size: number): number;
    _free(place: number): void;
    _TaskLogCall(name: number, keys: number): number;
    _TaskLogBeginFile(): void;
    _TaskLogUnpackLine(place: number, size: number): number;
    _TaskLogUnpacked(): number;
    _TaskLogUnpackedSize(): number;
    _TaskLogText(): number;
    _TaskLogTextSize(): number;
    _TaskLogInts(): number;
    _TaskLogIntCount(): number;
    _TaskLogFloats(): number;
    _TaskLogFloatCount(): number;
    _TaskLogPixels(): number;
    _TaskLogPixelCount(): number;
  }
  export default function createBridge(options: {
    wasmBinary: Uint8Array;
    printErr(line: string): void;
    print(line: string): void;
  }): Promise<Bridge>;
}
