# What CMake's Darwin rules leave to Apple's own compiler driver.
foreach(language C CXX)
  set(CMAKE_SHARED_LIBRARY_RUNTIME_${language}_FLAG "-Wl,-rpath,")
endforeach()
set(CMAKE_LINK_DEPENDENT_LIBRARY_FILES 0)
