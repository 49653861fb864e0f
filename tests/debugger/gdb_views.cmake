# Stops a program in gdb and compares what its views show.
execute_process(
  COMMAND "${GDB}" -nx -batch -ex "set debuginfod enabled off" -ex "set width 0" -ex "set print pretty off" -ex "source ${VIEWS}"
    -ex "break shown" -ex "run" -ex "print tree" "${PROGRAM}"
  OUTPUT_VARIABLE output ERROR_VARIABLE errors)
if(errors MATCHES "ptrace: Operation not permitted" OR output MATCHES "ptrace: Operation not permitted")
  message(STATUS "skipped: this system lets nobody trace a program")
  return()
endif()
set(expected [=[Map of 9 = {["corner"] = Vec3d {1, 2, 3}, ["deep"] = Map of 1 = {["er"] = Bool false}, ["list"] = List of 3 = {Integer 1, String "two", List of 0}, ["name"] = String "Bär", ["names"] = StringList {"a", "b"}, ["nothing"] = null, ["part"] = Real 2.5, ["when"] = DateTime 7, ["whole"] = Integer 42}]=])
string(FIND "${output}" "${expected}" at)
if(at EQUAL -1)
  message(FATAL_ERROR "expected\n${expected}\nin\n${output}\n${errors}")
endif()
