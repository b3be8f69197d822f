// Base64 of gzip, as the page carries files, to bytes, in portions.
export async function gunzip(base64: string, use: (bytes: Uint8Array) => void): Promise<void> {
  const portion = 1 << 20; // a multiple of 4
  let at = 0;
  const packed = new ReadableStream<Uint8Array<ArrayBuffer>>({
    pull(controller) {
      if (at >= base64.length) return controller.close();
      controller.enqueue(bytesOf(atob(base64.slice(at, at + portion))));
      at += portion;
    },
  });
  const reader = packed.pipeThrough(new DecompressionStream("gzip")).getReader();
  for (let part = await reader.read(); !part.done; part = await reader.read()) use(part.value);
}

function bytesOf(binary: string): Uint8Array<ArrayBuffer> {
  const bytes = new Uint8Array(binary.length);
  for (let i = 0; i < binary.length; ++i) bytes[i] = binary.charCodeAt(i);
  return bytes;
}
