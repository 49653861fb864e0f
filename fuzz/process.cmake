ky_fuzz(command_line process/command_line_fuzz.cpp)
