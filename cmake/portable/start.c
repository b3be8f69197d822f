// Starts a program with older C libraries. Up to 2.33 they left it to the program to call its own
// initialisers, so what starts a program that is linked today does not; a newer one calls what it is given,
// in place of doing it itself.
#include <stddef.h>

typedef void Initialiser(int count, char** arguments, char** environment);
extern Initialiser* __preinit_array_start[];
extern Initialiser* __preinit_array_end[];
extern Initialiser* __init_array_start[];
extern Initialiser* __init_array_end[];
void _init(void);

static void Initialise(int count, char** arguments, char** environment) {
  for (Initialiser** next = __preinit_array_start; next < __preinit_array_end; ++next)
    (*next)(count, arguments, environment);
  _init();
  for (Initialiser** next = __init_array_start; next < __init_array_end; ++next)
    (*next)(count, arguments, environment);
}

int __real___libc_start_main(int (*start)(int, char**, char**), int count, char** arguments,
                             Initialiser* initialise, void (*finish)(void), void (*finishLoader)(void),
                             void* stackEnd);
// By the linker's --wrap.
int __wrap___libc_start_main(int (*start)(int, char**, char**), int count, char** arguments,
                             Initialiser* initialise, void (*finish)(void), void (*finishLoader)(void),
                             void* stackEnd);
int __wrap___libc_start_main(int (*start)(int, char**, char**), int count, char** arguments,
                             Initialiser* initialise, void (*finish)(void), void (*finishLoader)(void),
                             void* stackEnd) {
  return __real___libc_start_main(start, count, arguments, initialise ? initialise : Initialise, finish,
                                  finishLoader, stackEnd);
}
