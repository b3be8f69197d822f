// The names of the functions that a program is linked with where large files are an addition to the system.
#pragma once

#ifdef __USE_FILE_OFFSET64
#define TASKLOG_LARGE(function) function##64
#else
#define TASKLOG_LARGE(function) function
#endif
