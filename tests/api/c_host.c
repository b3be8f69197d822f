/* A host program in C that knows nothing but the public header, and calls every function of it over the
 * stand-alone scripted target-access library (tests/support/builtinscript.cpp).
 * usage: api_c_host walk FILE   checks everything; FILE is written and read back
 *        api_c_host probe       prints how the target-access library in use describes a missing variable */
#include <stdio.h>
#include <string.h>
#include <tasklog/tasklog.h>

static int failures = 0;

static void Fail(int line, const char* condition) {
  ++failures;
  fprintf(stderr, "line %d: not %s\n", line, condition);
}

#define CHECK(condition) ((condition) ? (void)0 : Fail(__LINE__, #condition))

struct Progress {
  int calls;
  double last;
  int cancelAtCall;
};

static void OnProgress(TLTaskLog log, double fraction, int32_t* proceed, void* user) {
  struct Progress* progress = user;
  CHECK(log != NULL);
  CHECK(*proceed == 1);
  CHECK(progress->calls == 0 || fraction >= progress->last);
  progress->last = fraction;
  if (++progress->calls == progress->cancelAtCall) *proceed = 0;
}

static void CheckEmpty(TLTaskLog log) {
  TLCategoryIterator categories = TLTaskLogGetCategories(log, 0, NULL);
  TLEntryIterator entries = TLTaskLogGetEntries(log, NULL, 0, 0, UINT64_MAX);
  CHECK(TLTaskLogGetStartTime(log) == 0);
  CHECK(TLTaskLogGetStopTime(log) == 0);
  CHECK(TLTaskLogGetTicksPerSecond(log) == 0);
  CHECK(TLTaskLogGetCategoriesCount(log, 0, NULL) == 0);
  CHECK(TLTaskLogGetCategoriesCount(log, TL_CATS_ALL, "Idle") == 0);
  CHECK(TLTaskLogGetEntriesCount(log, NULL, 0, 0, UINT64_MAX) == 0);
  CHECK(TLCategoryIteratorNext(categories) == NULL);
  CHECK(TLCategoryIteratorNext(categories) == NULL);
  CHECK(TLEntryIteratorNext(entries) == NULL);
  CHECK(TLEntryIteratorNext(entries) == NULL);
  TLCategoryIteratorDestroy(categories);
  TLEntryIteratorDestroy(entries);
}

static void CheckCategories(TLTaskLog log) {
  TLCategoryIterator iterator = TLTaskLogGetCategories(log, TL_CATS_TASKS, "Ctrl");
  TLCategory ctrl = TLCategoryIteratorNext(iterator);
  TLCategory testpoint;
  CHECK(ctrl != NULL);
  if (!ctrl) return; /* not the target that this program expects */
  CHECK(TLCategoryIteratorNext(iterator) == NULL);
  TLCategoryIteratorDestroy(iterator);
  CHECK(TLCategoryGetType(ctrl) == TLCatTask);
  CHECK(strcmp(TLCategoryGetName(ctrl), "Ctrl") == 0);
  CHECK(TLCategoryGetName(ctrl) == TLCategoryGetName(ctrl));
  CHECK(TLCategoryGetId(ctrl) == 2);
  CHECK(TLTaskGetPriority(ctrl) == 5);
  CHECK(TLTaskGetTimeslice(ctrl) == -1);
  CHECK(TLTaskLogGetEntriesCount(log, ctrl, 0, 0, UINT64_MAX) == 3);

  iterator = TLTaskLogGetCategories(log, TL_CATS_TESTPOINTS, NULL);
  testpoint = TLCategoryIteratorNext(iterator);
  TLCategoryIteratorDestroy(iterator);
  CHECK(TLCategoryGetType(testpoint) == TLCatTestpoint);
  CHECK(TLCategoryGetId(testpoint) == 0x9000);
  CHECK(TLTaskGetPriority(testpoint) == 0 && TLTaskGetTimeslice(testpoint) == 0);
  CHECK(TLTaskLogGetCategoriesCount(log, TL_CATS_TIMING_ISSUES, NULL) == 1);
  CHECK(TLTaskLogGetCategoriesCount(log, 0, NULL) == 6);
}

static void AddName(char* text, TLCategory category) {
  strcat(text, category ? TLCategoryGetName(category) : "-");
  strcat(text, " ");
}

static void CheckEntries(TLTaskLog log) {
  char text[200] = "";
  TLEntryIterator iterator = TLTaskLogGetEntries(log, NULL, TL_LOGS_ALL, 0, UINT64_MAX);
  for (TLEntry entry; (entry = TLEntryIteratorNext(iterator)) != NULL;) {
    sprintf(text + strlen(text), "%u %u ", (unsigned)TLEntryGetTimestamp(entry),
            (unsigned)TLEntryGetType(entry));
    AddName(text, TLEntryGetCategory(entry, 0));
    AddName(text, TLEntryGetCategory(entry, 1));
    CHECK(TLEntryGetCategory(entry, 2) == NULL && TLEntryGetCategory(entry, UINT32_MAX) == NULL);
  }
  CHECK(strcmp(text, "990 4 Comm - 1000 4 Idle Comm 1010 0 Ctrl Idle 1020 6 TP1 Ctrl 1030 7 STKO Ctrl ") ==
        0);
  CHECK(TLEntryIteratorNext(iterator) == NULL);
  TLEntryIteratorDestroy(iterator);
  CHECK(TLTaskLogGetEntriesCount(log, NULL, TL_LOGS_SWITCHES, 0, UINT64_MAX) == 3);
  CHECK(TLTaskLogGetEntriesCount(log, NULL, TL_LOGS_TASK_EVENTS, 0, UINT64_MAX) == 0);
  CHECK(TLTaskLogGetEntriesCount(log, NULL, TL_LOGS_TESTPOINTS | TL_LOGS_TIMING_ISSUES, 1021, 1030) == 1);
  CHECK(TLTaskLogGetStartTime(log) == 990 && TLTaskLogGetStopTime(log) == 1030);
  CHECK(TLTaskLogGetTicksPerSecond(log) == 1000000);
}

static void CheckFilling(TLTaskLog log) {
  struct Progress progress = {0, 0.0, 2};
  CHECK(TLStartLog("ctl/@1", NULL) == TL_OK);
  CHECK(TLStartLog("ctl/@2", "") == TLErrLoggerNotStarted);
  CHECK(TLStartLog("ctl/@3", "Ctrl") == 0x50201);
  CHECK(TLStartLog(NULL, NULL) == TLStartLog("", NULL) && TLStartLog("", NULL) == 0x50401);
  CHECK(TLTaskLogAppendFromTarget(log, NULL, 0, NULL, NULL) == 0x50201); /* the target's, not ours */
  CHECK(TLTaskLogAppendFromTarget(log, "ctl", 1, OnProgress, &progress) == TLErrCanceled);
  CHECK(progress.calls == 2);
  CHECK(TLTaskLogAppendFromTarget(log, "ctl", 9, NULL, NULL) == 0x50201);
  progress.calls = progress.cancelAtCall = 0;
  CHECK(TLTaskLogAppendFromTarget(log, "ctl", 1, OnProgress, &progress) == TL_OK);
  CHECK(progress.calls == 11 && progress.last == 1.0);
  CHECK(TLTaskLogAppendFromTarget(log, "ctl", 1, NULL, NULL) == TL_OK);
}

static void CheckFile(TLTaskLog log, const char* path) {
  TLTaskLog reread = NULL;
  CHECK(TLTaskLogSaveAsFile(log, NULL) == TLErrFileOpen);
  CHECK(TLTaskLogSaveAsFile(log, path) == TL_OK);
  CHECK(TLTaskLogCreate(&reread) == TL_OK);
  CHECK(TLTaskLogAppendFromFile(reread, NULL) == TLErrFileOpen);
  CHECK(TLTaskLogAppendFromFile(reread, "no such file") == TLErrFileOpen);
  CHECK(TLTaskLogAppendFromFile(reread, path) == TL_OK);
  /* The timing issue at the stop time is taken for an epilog. */
  CHECK(TLTaskLogGetEntriesCount(reread, NULL, 0, 0, UINT64_MAX) == 4);
  CHECK(TLTaskLogGetStopTime(reread) == 1030);
  TLTaskLogDestroy(reread);
}

static void Walk(const char* path) {
  TLTaskLog log = NULL;
  CHECK(TLTaskLogCreate(NULL) == TLErrOutOfMemory);
  TLTaskLogDestroy(NULL);
  TLCategoryIteratorDestroy(NULL);
  TLEntryIteratorDestroy(NULL);
  CHECK(TLTaskLogCreate(&log) == TL_OK && log != NULL);
  CheckEmpty(log);
  CheckFilling(log);
  CheckEntries(log);
  CheckCategories(log);
  CheckFile(log, path);
  TLTaskLogDestroy(log);
}

static void Probe(void) {
  char text[200];
  TLGetErrorMessage(0x50201, text, sizeof text);
  puts(text);
}

int main(int argc, char** argv) {
  if (argc == 2 && strcmp(argv[1], "probe") == 0) {
    Probe();
  } else if (argc == 3 && strcmp(argv[1], "walk") == 0) {
    Walk(argv[2]);
  } else {
    return 2;
  }
  return failures == 0 ? 0 : 1;
}
