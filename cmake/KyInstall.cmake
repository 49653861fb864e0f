message(STATUS "install rules follow")
