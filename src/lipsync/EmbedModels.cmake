# Writes the bytes of INPUT as a C++ array into OUTPUT. An empty INPUT gives an empty
# set of models (size 0), which the program reports as missing.
file(READ ${INPUT} hex HEX)
string(LENGTH "${hex}" length)
math(EXPR size "${length} / 2")
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${hex}")
string(REGEX REPLACE "(0x[0-9a-f][0-9a-f],0x[0-9a-f][0-9a-f],0x[0-9a-f][0-9a-f],0x[0-9a-f][0-9a-f],0x[0-9a-f][0-9a-f],0x[0-9a-f][0-9a-f],0x[0-9a-f][0-9a-f],0x[0-9a-f][0-9a-f],0x[0-9a-f][0-9a-f],0x[0-9a-f][0-9a-f],0x[0-9a-f][0-9a-f],0x[0-9a-f][0-9a-f],0x[0-9a-f][0-9a-f],0x[0-9a-f][0-9a-f],0x[0-9a-f][0-9a-f],0x[0-9a-f][0-9a-f],)" "\\1\n" bytes "${bytes}")
if(size EQUAL 0)
  set(bytes "0x00,")
endif()
file(WRITE ${OUTPUT} "// Generated from data/mouth_models.bin; do not edit.\n#include <cstddef>\n\n"
     "extern const unsigned char kLipsyncModelData[] = {\n${bytes}};\n"
     "extern const std::size_t kLipsyncModelDataSize = ${size};\n")
