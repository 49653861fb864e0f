ky_fuzz(machine_texts sysinfo/machine_texts_fuzz.cpp)
