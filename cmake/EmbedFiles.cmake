# SPDX-License-Identifier: Apache-2.0
# Run by cmake -P: writes OUTPUT, a C++ source with the bytes of FILES (a list) as the table sim::tvsim::PageFiles().
set(arrays "")
set(rows "")
set(number 0)
foreach(file ${FILES})
  get_filename_component(name ${file} NAME)
  file(READ ${file} hex HEX)
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${hex}")
  string(REGEX REPLACE "(0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,)" "\\1\n    " bytes "${bytes}")
  string(APPEND arrays "constexpr unsigned char kFile${number}[] = {\n    ${bytes}0};\n")
  string(APPEND rows "    {\"${name}\", {reinterpret_cast<const char*>(kFile${number}), sizeof kFile${number} - 1}},\n")
  math(EXPR number "${number} + 1")
endforeach()
file(WRITE ${OUTPUT} "// Made from simulator/web by cmake/EmbedFiles.cmake.
#include \"simulator/tvsim/serve/PageFiles.h\"

namespace sim::tvsim {
namespace {
${arrays}}  // namespace

std::span<const PageFile> PageFiles() {
  static const std::initializer_list<PageFile> kFiles = {
${rows}  };
  return {kFiles.begin(), kFiles.size()};
}

}  // namespace sim::tvsim
")
