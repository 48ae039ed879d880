# The executable that ships: the product's components are 32-bit in-process classes.
set(CMAKE_SYSTEM_PROCESSOR i686)
include(${CMAKE_CURRENT_LIST_DIR}/windows.cmake)
