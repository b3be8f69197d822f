// What libraries of today's systems want of the C library, in terms of what older ones have:
// cmake/portable/oldglibc.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <stdarg.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#define HIDDEN __attribute__((visibility("hidden")))

// Before 2.33 the stat functions had a version of the structure for an argument.
int __xstat(int version, const char* path, struct stat* status);
int __lxstat(int version, const char* path, struct stat* status);
int __fxstat(int version, int fd, struct stat* status);
int __fxstatat(int version, int fd, const char* path, struct stat* status, int flags);
enum { statVersion = 1 };

HIDDEN int stat(const char* path, struct stat* status) { return __xstat(statVersion, path, status); }
HIDDEN int lstat(const char* path, struct stat* status) { return __lxstat(statVersion, path, status); }
HIDDEN int fstat(int fd, struct stat* status) { return __fxstat(statVersion, fd, status); }
HIDDEN int fstatat(int fd, const char* path, struct stat* status, int flags) {
  return __fxstatat(statVersion, fd, path, status, flags);
}
HIDDEN int stat64(const char* path, struct stat64* status) {
  return __xstat(statVersion, path, (struct stat*)status);
}
HIDDEN int lstat64(const char* path, struct stat64* status) {
  return __lxstat(statVersion, path, (struct stat*)status);
}
HIDDEN int fstat64(int fd, struct stat64* status) { return __fxstat(statVersion, fd, (struct stat*)status); }
_Static_assert(sizeof(struct stat) == sizeof(struct stat64), "of 64 bits there is one structure");

// Since 2.28; what follows the command is one word or nothing.
HIDDEN int fcntl64(int fd, int command, ...) {
  va_list rest;
  va_start(rest, command);
  void* const argument = va_arg(rest, void*);
  va_end(rest);
  return fcntl(fd, command, argument);
}

// Since 2.27.
HIDDEN int memfd_create(const char* name, unsigned flags) {
  return (int)syscall(SYS_memfd_create, name, flags);
}

// Since 2.36.
HIDDEN uint32_t arc4random(void) {
  uint32_t number;
  if (getentropy(&number, sizeof number) != 0) abort();
  return number;
}

// Since 2.35: in which object an address lies, for the unwinder of exceptions.
static int FindObject(struct dl_phdr_info* object, size_t size, void* found) {
  struct dl_find_object* const result = found;
  const uintptr_t wanted = (uintptr_t)result->dlfo_map_start;
  const ElfW(Phdr)* loaded = NULL;
  const ElfW(Phdr)* frames = NULL;
  (void)size;
  for (int i = 0; i < object->dlpi_phnum; ++i) {
    const ElfW(Phdr)* const part = &object->dlpi_phdr[i];
    if (part->p_type == PT_LOAD && wanted - object->dlpi_addr - part->p_vaddr < part->p_memsz) loaded = part;
    if (part->p_type == DLFO_EH_SEGMENT_TYPE) frames = part;
  }
  if (loaded == NULL) return 0;
  if (frames == NULL) return -1;
  result->dlfo_eh_frame = (void*)(object->dlpi_addr + frames->p_vaddr);
  return 1;
}

HIDDEN int _dl_find_object(void* address, struct dl_find_object* result) {
  memset(result, 0, sizeof *result);
  result->dlfo_map_start = address;
  return dl_iterate_phdr(FindObject, result) == 1 ? 0 : -1;
}

// Since 2.32 it says that no other thread was started yet; false is always right.
HIDDEN char __libc_single_threaded = 0;
