// The life of a log.
#include "model/model.h"

_STLTaskLog::~_STLTaskLog() {
  for (_STLCategory* category : categories) delete category;
}
