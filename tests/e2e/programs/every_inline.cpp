// Links only when the library shows what the inline functions of its headers need: all of them are compiled into this
// program.

#include "log4vrk/log4vrk.h"

int main() {}
