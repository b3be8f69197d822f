/* libtasklog: collect, query and store the task logs of a real-time controller.
 *
 * This header is the manual. It is plain C (C11) and may be included from C++; tasklog.hpp beside it
 * is a C++20 face over the same functions.
 *
 * A task log is a time-stamped record of what the tasks of a controller (the target) did: task
 * switches, task events, testpoints passed, timing issues. The controller keeps it in ring buffers,
 * one for the scheduler's logger and one for the logger of each numbered kernel.
 *
 *   TLStartLog("ctl/@1", "Control");                              // arm and start the logger
 *   TLTaskLog log;
 *   if (TLTaskLogCreate(&log) != TL_OK) ...
 *   TLTaskLogAppendFromTarget(log, "ctl", 1, NULL, NULL);         // read its buffer
 *   TLEntryIterator it = TLTaskLogGetEntries(log, NULL, 0, 0, UINT64_MAX);
 *   for (TLEntry e; (e = TLEntryIteratorNext(it)) != NULL;) ...   // in time order
 *   TLEntryIteratorDestroy(it);
 *   TLTaskLogSaveAsFile(log, "machine.tasklog");
 *   TLTaskLogDestroy(log);
 *
 * CONVENTIONS, valid for all functions unless one says otherwise
 *
 * Handles    are plain pointers to objects of the library; none is reference-counted. A function
 *            documented as taking null for a handle accepts it; all others require a valid handle and
 *            do not check.
 * Status     is 0 (TL_OK) or says what failed. Codes 0x40CAxxxx are the library's own (list below);
 *            every other value comes unchanged from the target-access library. TLGetErrorMessage()
 *            gives the text of both. The library prints nothing and raises no exception to its caller.
 * Text       is NUL-terminated bytes. Names are compared byte by byte and may be empty. The library
 *            does not interpret an encoding, and names from a controller or a file may hold any byte.
 * Time       is counted in controller timer ticks from an origin that the controller chooses.
 *            TLTaskLogGetTicksPerSecond() converts to seconds.
 * Validity   categories and their names live until the log is destroyed. Entries, entry iterators and
 *            category iterators live until the next append to the log or its destruction; an iterator
 *            may still be destroyed after that, but not advanced.
 * Memory     what a function returns belongs to the log, except iterators, which the caller frees
 *            with the matching Destroy function. Running out of memory is the status
 *            TLErrOutOfMemory, or a null iterator where there is no status.
 * Threads    the library starts none, takes no locks and has no global state. Different logs may be
 *            used from different threads freely. One log may be read (getters, counts, iterators,
 *            saves) by several threads while none appends to it or destroys it.
 * Target     everything that crosses to the controller goes through the target-access library
 *            libquor_32.so.0, on the caller's thread; a call blocks while that library works.
 */
#ifndef TASKLOG_TASKLOG_H
#define TASKLOG_TASKLOG_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Handles. Each points to an object whose inside is private to the library. */
typedef struct _STLTaskLog* TLTaskLog;                   /* owned by the caller */
typedef const struct _STLCategory* TLCategory;           /* owned by the log */
typedef const struct _STLEntry* TLEntry;                 /* owned by the log */
typedef struct _STLCategoryIterator* TLCategoryIterator; /* owned by the caller */
typedef struct _STLEntryIterator* TLEntryIterator;       /* owned by the caller */

/* Status codes of the library. The text is what TLGetErrorMessage() gives. */
enum {
  TL_OK = 0,
  TLErrOutOfMemory = 0x40CA0001,     /* "Out of memory" */
  TLErrCanceled = 0x40CA0002,        /* "Operation canceled": by the progress callback */
  TLErrFileOpen = 0x40CA0010,        /* "Error opening TaskLog file" */
  TLErrFileRead = 0x40CA0011,        /* "Error reading TaskLog file": an I/O error while reading */
  TLErrFileInvalid = 0x40CA0012,     /* "Not a valid TaskLog file": wrong or cut short */
  TLErrFileVersion = 0x40CA0013,     /* "TaskLog file has newer version than supported" */
  TLErrFileWrite = 0x40CA0014,       /* "Error writing TaskLog file" */
  TLErrLoggerNotStarted = 0x40CA0020 /* the start procedure answered 0; text of target-access library */
};

/* What a category is. */
typedef uint32_t ETLCatType;
enum {
  TLCatTask = 0,       /* a task of the controller */
  TLCatTestpoint = 1,  /* a place in the program that reports being passed */
  TLCatTimingIssue = 2 /* a kind of timing issue, such as an overrun */
};

/* Category type masks: bit n selects kind n. 0 selects all, as TL_CATS_ALL does. */
#define TL_CATS_TASKS UINT64_C(0x1)
#define TL_CATS_TESTPOINTS UINT64_C(0x2)
#define TL_CATS_TIMING_ISSUES UINT64_C(0x4)
#define TL_CATS_ALL UINT64_C(0x7)

/* What an entry says happened. Slot 0 holds the category that the entry is about, slot 1 the task that
 * ran until then (switches) or was running (all others). A controller may also record types 8 to 14;
 * they carry a task in slot 0, and no mask of 0 selects them. */
typedef uint32_t ETLLogType;
enum {
  TLLogSwitch0 = 0,    /* switch to the task in slot 0 */
  TLLogSwitch1 = 1,    /* switch to the task in slot 0 */
  TLLogTaskEvent = 2,  /* an event of the task in slot 0, which does not start running */
  TLLogSwitch3 = 3,    /* switch to the task in slot 0 */
  TLLogSwitch4 = 4,    /* switch to the task in slot 0: the plain switch */
  TLLogSwitch5 = 5,    /* switch to the task in slot 0 */
  TLLogTestpoint = 6,  /* the testpoint in slot 0 was passed */
  TLLogTimingIssue = 7 /* the timing issue in slot 0 was seen */
};

/* Entry type masks: bit n selects type n. 0 selects types 0 to 7, as TL_LOGS_ALL does. */
#define TL_LOGS_SWITCHES UINT64_C(0x3B)
#define TL_LOGS_TASK_EVENTS UINT64_C(0x04)
#define TL_LOGS_TESTPOINTS UINT64_C(0x40)
#define TL_LOGS_TIMING_ISSUES UINT64_C(0x80)
#define TL_LOGS_ALL UINT64_C(0xFF)

/* Reports how far an append from a target has come.
 * log       the log being filled; its entries are still those from before the append
 * fraction  0.0 to 1.0, never decreasing within one call
 * proceed   holds 1; store 0 to cancel (no effect at fraction 1.0: the work is done)
 * user      the pointer given to TLTaskLogAppendFromTarget()
 * Called on the thread of the append, at the start, after each transfer, after every record and at the
 * end. It may read `log` but must not append to it or destroy it, and must not throw. */
typedef void (*TLProgress)(TLTaskLog log, double fraction, int32_t* proceed, void* user);

/* ---- Create and destroy ------------------------------------------------------------------------ */

/* Creates an empty log: all times 0, no categories, no entries.
 * Owner     the caller frees it with TLTaskLogDestroy()
 * Errors    TLErrOutOfMemory, also for a null `log`; the variable is then untouched
 * Threads   any */
uint32_t TLTaskLogCreate(TLTaskLog* log);

/* Destroys a log with its categories and entries. Null is ignored.
 * Threads   beside no other use of `log` */
void TLTaskLogDestroy(TLTaskLog log);

/* ---- Fill -------------------------------------------------------------------------------------- */

/* Starts the logger of a controller.
 * target       the controller's name, as the target-access library takes it. A suffix "/@n" or "\@n"
 *              with n written in the digits 1 to 8 selects the logger of kernel n; without one, kernel 0.
 *              Null counts as the empty name
 * triggerTask  name of the task that triggers the logger; null or empty leaves the trigger as it is.
 *              A failure to set it on a controller with loggers per kernel is not reported
 * Errors    TLErrLoggerNotStarted when the controller answered that it did not start; else a code of the
 *           target-access library
 * Threads   any, as far as the target-access library allows */
uint32_t TLStartLog(const char* target, const char* triggerTask);

/* Reads the buffer of one logger and adds the entries that the log does not hold yet.
 * target    the controller's name. A kernel suffix, as above, is taken off. Null counts as the empty name
 * kernel    -1: the scheduler's logger; above 0: the logger of that kernel, reached through the target
 *           name with "/@kernel" behind it; any other value: Kernel.<kernel>.Logger, reached through the
 *           plain target name
 * progress  may be null; see TLProgress
 * user      handed to `progress`
 * The timer rate of the controller replaces the log's. Start and stop time widen to cover all entries. The
 * log holds an entry already when it has one of the same type, time and category id; a timing issue whose
 * code is not printable also when it has one of the same type, time and category name. For an id that the
 * log does not know, the append fetches all tasks or all testpoints of the controller. For one that the
 * controller does not know either, it makes a category named "0x%08X" (tasks: priority 7, time slice -1).
 * It truncates numbers that the controller reports toward zero, and counts modulo 2^32; one that no
 * 64-bit integer holds counts as 0. A last record that the buffer holds only in part does not count.
 * Errors    TLErrCanceled, TLErrOutOfMemory or a code of the target-access library, with the entries,
 *           start and stop time as they were; ticks per second and categories found so far may be new.
 *           One exception: when fetching tasks or testpoints fails, the append completes, with
 *           categories named after ids, and then returns the code of the last failed fetch
 * Threads   beside no other use of `log` */
uint32_t TLTaskLogAppendFromTarget(TLTaskLog log, const char* target, int32_t kernel, TLProgress progress,
                                   void* user);

/* Reads a TaskLog file and adds all its entries; they are not compared with those the log holds.
 * The file's start time, stop time and ticks per second replace the log's. docs/file-format.md has the
 * format. A tick rate divisor of 0 makes a file invalid.
 * Errors    TLErrFileOpen (also for a null `path`), TLErrFileRead, TLErrFileInvalid, TLErrFileVersion,
 *           TLErrOutOfMemory. The entries are then as they were; times, ticks per second, categories
 *           and task ids that were read before the failure stay
 * Threads   beside no other use of `log` */
uint32_t TLTaskLogAppendFromFile(TLTaskLog log, const char* path);

/* ---- Query the log ----------------------------------------------------------------------------- */

/* Start of the logged period, in ticks; 0 until an append sets it. The period covers every entry of an
 * append from a target; an append from a file takes it from the file.
 * Threads   beside other reads of `log` */
uint64_t TLTaskLogGetStartTime(TLTaskLog log);

/* End of the logged period, in ticks; 0 until an append sets it.
 * Threads   beside other reads of `log` */
uint64_t TLTaskLogGetStopTime(TLTaskLog log);

/* Ticks per second; 0 until an append sets it, and 0 when a controller reports a tick length that gives no
 * rate (not finite, zero or negative).
 * Threads   beside other reads of `log` */
uint64_t TLTaskLogGetTicksPerSecond(TLTaskLog log);

/* Number of categories that TLTaskLogGetCategories() yields for the same arguments.
 * Threads   beside other reads of `log` */
uint32_t TLTaskLogGetCategoriesCount(TLTaskLog log, uint64_t types, const char* name);

/* Iterates over categories, in the order in which the log met them.
 * types     bit n keeps kind n; 0 keeps all
 * name      keeps categories of exactly this name; null keeps all. Several may share a name
 * Owner     the caller frees the iterator with TLCategoryIteratorDestroy()
 * Valid     until the next append to `log` or its destruction
 * Errors    null when memory runs out; an empty selection is an iterator that yields null at once
 * Threads   beside other reads of `log` */
TLCategoryIterator TLTaskLogGetCategories(TLTaskLog log, uint64_t types, const char* name);

/* Number of entries that TLTaskLogGetEntries() yields for the same arguments. With a null category and a
 * mask that holds types 0 to 7 it also counts entries of types 8 to 14, which the mask of 0 does not
 * yield.
 * Threads   beside other reads of `log` */
uint64_t TLTaskLogGetEntriesCount(TLTaskLog log, TLCategory category, uint64_t types, uint64_t from,
                                  uint64_t to);

/* Iterates over the entries from `from` to `to`, both included, in time order.
 * category  keeps entries that hold it in slot 0 or 1; null keeps all
 * types     bit n keeps entry type n; 0 means types 0 to 7
 * from, to  ticks; 0 and UINT64_MAX select everything. A bound at or beyond the log's period is not
 *           applied, so entries that lie outside the period (possible after an append from a file) are
 *           then included
 * Owner     the caller frees the iterator with TLEntryIteratorDestroy()
 * Valid     until the next append to `log` or its destruction
 * Errors    null when memory runs out; an empty selection is an iterator that yields null at once
 * Threads   beside other reads of `log` */
TLEntryIterator TLTaskLogGetEntries(TLTaskLog log, TLCategory category, uint64_t types, uint64_t from,
                                    uint64_t to);

/* ---- Iterate ----------------------------------------------------------------------------------- */

/* The next category; null once none is left, and on every later call.
 * Owner     the log
 * Threads   one at a time for one iterator */
TLCategory TLCategoryIteratorNext(TLCategoryIterator iterator);

/* Frees an iterator. Null is ignored. Allowed after the log has changed or gone. */
void TLCategoryIteratorDestroy(TLCategoryIterator iterator);

/* The next entry; null once none is left, and on every later call.
 * Owner     the log
 * Valid     until the next append to the log or its destruction
 * Threads   one at a time for one iterator */
TLEntry TLEntryIteratorNext(TLEntryIterator iterator);

/* Frees an iterator. Null is ignored. Allowed after the log has changed or gone. */
void TLEntryIteratorDestroy(TLEntryIterator iterator);

/* ---- Read a category or an entry ---------------------------------------------------------------- */

/* The kind of a category. It never changes.
 * Threads   beside other reads of the log; so for all functions of this group */
ETLCatType TLCategoryGetType(TLCategory category);

/* The name of a category: the same pointer on every call.
 * Owner     the log
 * Valid     until the log is destroyed */
const char* TLCategoryGetName(TLCategory category);

/* Id of a category on the controller: of a task its id there, of a testpoint its address (low 32
 * bits), of a timing issue the first four characters of its name, first in the top bits; characters that
 * a shorter name lacks count as 0. A task's id may change with an append. */
uint32_t TLCategoryGetId(TLCategory category);

/* Priority of a task as the controller reports it, 0 to 255; 0 for a category of another kind. */
uint32_t TLTaskGetPriority(TLCategory category);

/* Time slice of a task as the controller reports it; 0 for a category of another kind. */
int32_t TLTaskGetTimeslice(TLCategory category);

/* What the entry says happened. */
ETLLogType TLEntryGetType(TLEntry entry);

/* When it happened, in ticks. */
uint64_t TLEntryGetTimestamp(TLEntry entry);

/* The category in slot 0 or 1 of an entry; null when the slot is empty, and for any other slot.
 * Slot 1 is empty before the first task switch of a log.
 * Owner     the log
 * Valid     until the log is destroyed */
TLCategory TLEntryGetCategory(TLEntry entry, uint32_t slot);

/* ---- Save ---------------------------------------------------------------------------------------- */

/* Writes the log to a TaskLog file, replacing what is at `path`. docs/file-format.md says what a file
 * holds and what it cannot.
 * Errors    TLErrFileOpen (also for a null `path`), TLErrFileWrite, TLErrOutOfMemory; the file is closed
 *           and holds what was written so far. An error that shows only when the file is closed is not
 *           reported
 * Threads   beside other reads of `log` */
uint32_t TLTaskLogSaveAsFile(TLTaskLog log, const char* path);

/* ---- Messages ------------------------------------------------------------------------------------ */

/* Writes the text of a status, cut to `size` bytes with its NUL. With size 0, stores the size needed as
 * a uint32_t in the first four bytes of `buffer` instead, so `buffer` must hold four bytes even then.
 * The target-access library describes codes without a text of the library's own. It gets size - 1 bytes:
 * add one to the size needed, or its text loses its last character.
 * Errors    none; a null `buffer` is ignored
 * Threads   any, as far as the target-access library allows */
void TLGetErrorMessage(uint32_t status, char* buffer, uint32_t size);

#ifdef __cplusplus
}
#endif

#endif
