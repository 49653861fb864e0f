ky_fuzz(csv_reader io/csv_reader_fuzz.cpp)
ky_fuzz(ini_loader io/ini_loader_fuzz.cpp)
ky_fuzz(data_stream io/data_stream_fuzz.cpp)
