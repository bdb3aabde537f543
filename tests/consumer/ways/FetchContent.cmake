include(FetchContent)
FetchContent_Declare(log4vrk SOURCE_DIR "${TREE}")
FetchContent_MakeAvailable(log4vrk)
