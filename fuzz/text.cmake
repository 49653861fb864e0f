ky_fuzz(utf8_text text/utf8_text_fuzz.cpp)
ky_fuzz(hex_uuid text/hex_uuid_fuzz.cpp)
ky_fuzz(natural_order text/natural_order_fuzz.cpp)
ky_fuzz(text_table text/table_fuzz.cpp)
