// SPDX-License-Identifier: Apache-2.0
/// ppm-to-jxl [ORIENTATION [EFFORT]] < PICTURE.ppm > PICTURE.jxl: writes a JPEG XL of a binary PPM of 8 bits, as
/// ImageMagick often cannot. ORIENTATION: what viewers are to do, EXIF's numbers 1 to 8; EFFORT: 1 fast to 9 small.
#include <jxl/encode.h>
#include <jxl/thread_parallel_runner.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "simulator/base/CHandle.h"

namespace {

using EncoderHandle = sim::CHandle<JxlEncoder, JxlEncoderDestroy>;
using RunnerHandle = sim::CHandle<void, JxlThreadParallelRunnerDestroy>;

constexpr size_t kThreads = 2;
/// Hardly to be told from the original.
constexpr float kDistance = 1;

struct Ppm {
  uint32_t width = 0;
  uint32_t height = 0;
  std::vector<uint8_t> pixels;  ///< red, green, blue; empty = not a PPM
};

Ppm ReadPpm(std::FILE* file) {
  Ppm ppm;
  if (std::fscanf(file, "P6 %u %u 255", &ppm.width, &ppm.height) != 2 || std::fgetc(file) == EOF) {
    return {};
  }
  ppm.pixels.resize(size_t{ppm.width} * ppm.height * 3);
  if (std::fread(ppm.pixels.data(), 1, ppm.pixels.size(), file) != ppm.pixels.size()) {
    return {};
  }
  return ppm;
}

bool Prepare(JxlEncoder* encoder, const Ppm& ppm, int orientation, int effort) {
  JxlBasicInfo info;
  JxlEncoderInitBasicInfo(&info);
  info.xsize = ppm.width;
  info.ysize = ppm.height;
  info.bits_per_sample = 8;
  info.orientation = static_cast<JxlOrientation>(orientation);
  JxlColorEncoding srgb;
  JxlColorEncodingSetToSRGB(&srgb, JXL_FALSE);
  JxlEncoderFrameSettings* settings = JxlEncoderFrameSettingsCreate(encoder, nullptr);
  const JxlPixelFormat format{3, JXL_TYPE_UINT8, JXL_NATIVE_ENDIAN, 0};
  return JxlEncoderSetBasicInfo(encoder, &info) == JXL_ENC_SUCCESS &&
         JxlEncoderSetColorEncoding(encoder, &srgb) == JXL_ENC_SUCCESS &&
         JxlEncoderSetFrameDistance(settings, kDistance) == JXL_ENC_SUCCESS &&
         JxlEncoderFrameSettingsSetOption(settings, JXL_ENC_FRAME_SETTING_EFFORT, effort) == JXL_ENC_SUCCESS &&
         JxlEncoderAddImageFrame(settings, &format, ppm.pixels.data(), ppm.pixels.size()) == JXL_ENC_SUCCESS;
}

bool Write(JxlEncoder* encoder, std::FILE* file) {
  JxlEncoderCloseInput(encoder);
  std::vector<uint8_t> buffer(64 * 1024);
  JxlEncoderStatus status = JXL_ENC_NEED_MORE_OUTPUT;
  while (status == JXL_ENC_NEED_MORE_OUTPUT) {
    uint8_t* next = buffer.data();
    size_t left = buffer.size();
    status = JxlEncoderProcessOutput(encoder, &next, &left);
    std::fwrite(buffer.data(), 1, buffer.size() - left, file);
  }
  return status == JXL_ENC_SUCCESS && std::fflush(file) == 0;
}

}  // namespace

int main(int argc, char** argv) {
  const int orientation = argc > 1 ? std::atoi(argv[1]) : 1;
  const int effort = argc > 2 ? std::atoi(argv[2]) : 3;
  const Ppm ppm = ReadPpm(stdin);
  if (ppm.pixels.empty() || orientation < 1 || orientation > 8) {
    std::fprintf(stderr, "usage: ppm-to-jxl [ORIENTATION [EFFORT]] < PICTURE.ppm > PICTURE.jxl\n");
    return 2;
  }
  const RunnerHandle runner(JxlThreadParallelRunnerCreate(nullptr, kThreads));
  const EncoderHandle encoder(JxlEncoderCreate(nullptr));
  JxlEncoderSetParallelRunner(encoder.get(), JxlThreadParallelRunner, runner.get());
  const bool written = Prepare(encoder.get(), ppm, orientation, effort) && Write(encoder.get(), stdout);
  if (!written) {
    std::fprintf(stderr, "ppm-to-jxl: libjxl cannot write this picture\n");
  }
  return written ? 0 : 1;
}
