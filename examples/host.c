/* Lets the scheduler's logger of a controller record for a second, reads it and saves what it holds. */
#include <stdio.h>
#include <tasklog/tasklog.h>
#include <threads.h>

int main(int argc, char** argv) {
  const char* target = argc > 1 ? argv[1] : "demo";
  TLTaskLog log = NULL;
  uint32_t status = TLTaskLogCreate(&log);
  if (status == TL_OK) status = TLStartLog(target, NULL);
  if (status == TL_OK) thrd_sleep(&(struct timespec){.tv_sec = 1}, NULL);
  if (status == TL_OK) status = TLTaskLogAppendFromTarget(log, target, -1, NULL, NULL);
  if (status == TL_OK) status = TLTaskLogSaveAsFile(log, "machine.tasklog");

  char text[256] = "done";
  if (status != TL_OK) TLGetErrorMessage(status, text, sizeof text);
  printf("%s: %s\n", target, text);
  TLTaskLogDestroy(log);
  return status != TL_OK;
}
