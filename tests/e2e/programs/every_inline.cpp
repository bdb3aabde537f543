// Compiles every inline function of the library's headers. So it links only when the library exports all that they
// call.

#include "log4vrk/log4vrk.h"

int main() {}
