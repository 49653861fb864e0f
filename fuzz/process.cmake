ky_fuzz(command_line process/command_line_fuzz.cpp)
ky_fuzz(pipe_pump process/pipe_pump_fuzz.cpp)
