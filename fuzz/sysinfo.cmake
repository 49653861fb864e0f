ky_fuzz(machine_texts sysinfo/machine_texts_fuzz.cpp)
ky_fuzz(edid sysinfo/edid_fuzz.cpp)
ky_fuzz(system_texts sysinfo/system_texts_fuzz.cpp)
