ky_fuzz(variant_typing variant/typing_fuzz.cpp)
ky_fuzz(variant_paths variant/paths_fuzz.cpp)
