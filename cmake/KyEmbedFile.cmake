# SPDX-License-Identifier: MIT
# Writes the bytes of INPUT as an array named SYMBOL, and their number as SYMBOL_size, into the C++ file OUTPUT. Eight
# bytes a number: compilers take time and memory for each element. The NUL bytes that fill the last number up, at least
# one, let text be used where it lies.
file(SIZE "${INPUT}" size)
if(BYTE_ORDER STREQUAL "BIG_ENDIAN")
  set(number "0x\\1\\2\\3\\4\\5\\6\\7\\8,")
else()
  set(number "0x\\8\\7\\6\\5\\4\\3\\2\\1,")
endif()
set(chunk 65536)

file(WRITE "${OUTPUT}.part" "extern \"C\"
{
extern const unsigned long long ${SYMBOL}_size;
const unsigned long long ${SYMBOL}_size = ${size};
extern const unsigned long long ${SYMBOL}[];
const unsigned long long ${SYMBOL}[] = {
")
set(at 0)
while(at LESS size)
  file(READ "${INPUT}" digits OFFSET ${at} LIMIT ${chunk} HEX)
  math(EXPR at "${at} + ${chunk}")
  if(at GREATER size)
    string(APPEND digits "00000000000000")
  endif()
  string(REGEX REPLACE "(..)(..)(..)(..)(..)(..)(..)(..)" "${number}" digits "${digits}")
  string(REGEX REPLACE ",[0-9a-f]*$" ",\n" digits "${digits}")
  file(APPEND "${OUTPUT}.part" "${digits}")
endwhile()
file(APPEND "${OUTPUT}.part" "0};\n}\n")
file(RENAME "${OUTPUT}.part" "${OUTPUT}")
