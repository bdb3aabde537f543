// What every test includes, precompiled where the compiler can: the library, the test framework and what the tests share.

#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <limits>
#include <list>
#include <map>
#include <memory>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "log4vrk/log4vrk.h"
#include "log4vrk/platform/VRKFault.h"
#include "tests/support/Doubles.h"
#include "tests/support/InternalLog.h"
#include "tests/support/Logs.h"
#include "tests/support/Process.h"
#include "tests/support/TempDir.h"
#include "tests/support/Threads.h"
