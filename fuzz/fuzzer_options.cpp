// How the address sanitizer works in a fuzzer, where time goes into allocations: it keeps no call stacks of
// them, and of freed blocks the last 128 KiB, which stay in a cache. A fault is replayed in the sanitize
// build, which tells everything.
extern "C" const char* __asan_default_options() {
  return "malloc_context_size=0:quarantine_size_mb=0:thread_local_quarantine_size_kb=128:"
         "allocator_release_to_os_interval_ms=-1";
}
