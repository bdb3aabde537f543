// What every test includes: the library, the test framework, what the tests share, and the standard headers that these
// do not include. Precompiled where the compiler can.

#pragma once

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <ctime>
#include <limits>
#include <list>
#include <map>
#include <random>

#include "tests/support/Doubles.h"
#include "tests/support/InternalLog.h"
#include "tests/support/Logs.h"
#include "tests/support/Process.h"
#include "tests/support/TempDir.h"
#include "tests/support/Threads.h"
