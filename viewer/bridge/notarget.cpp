// A page has no controller: the functions of the target-access library refuse.
#include "lib/target/access.h"

extern "C" {

uint32_t GetVariable(const char*, const char*, void*, uint32_t) { return noSuchVariable; }
uint32_t PutVariable(const char*, const char*, const void*, uint32_t) { return noSuchVariable; }
uint32_t CallProcedure(const char*, const char*, double*) { return noSuchProcedure; }
uint32_t GetBlock32(const char*, int64_t, uint32_t*, uint32_t) { return noSuchVariable; }
uint32_t DbgTasksList(const char*, uint32_t*, uint32_t) { return noSuchProcedure; }
uint32_t DbgTaskGetName(const char*, uint32_t, char*, uint32_t) { return noSuchProcedure; }
uint32_t DbgTaskGetData(const char*, uint32_t, uint32_t, void*, uint32_t) { return noSuchProcedure; }
uint32_t GetErrorDescription(const char*, uint32_t, char*, uint32_t) { return noSuchProcedure; }
}
