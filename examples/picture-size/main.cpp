// SPDX-License-Identifier: Apache-2.0
/// Opens a picture with the television's picture library, waits for its event, and says what it measures.
#include <lumaview.h>
#include <lumaview_simulator.h>

#include <cstdio>
#include <future>

namespace {

/// What the reporting thread hands over. The library leaves the record's first field to us, and gives it back with
/// each report.
struct Waiting {
  std::promise<lumaview_event_result_e> parsed;
};

int OnParsed(void* record, lumaview_event_type_e, lumaview_event_result_e result) {
  static_cast<Waiting*>(static_cast<_lumaview_s*>(record)->user_data)->parsed.set_value(result);
  return 0;
}

int Fail(const char* path, const char* reason) {
  std::fprintf(stderr, "%s: %s\n", path, reason);
  return 1;
}

int PrintSize(const char* path, _lumaview_s* picture, Waiting& waiting) {
  picture->user_data = &waiting;
  lumaview_add_event_callback(picture, LUMAVIEW_EVENT_PARSE, OnParsed);
  if (const int error = lumaview_parse(picture); error != 0) return Fail(path, lumaview_strerror(error));
  if (waiting.parsed.get_future().get() != LUMAVIEW_RESULT_PARSE_OK) return Fail(path, "not a picture");

  int width = 0;
  int height = 0;
  if (const int error = lumaview_get_size(picture, &width, &height); error != 0)
    return Fail(path, lumaview_strerror(error));
  std::printf("%s: %d x %d\n", path, width, height);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: picture-size PICTURE\n");
    return 2;
  }
  _lumaview_s* picture = nullptr;
  if (const int error = lumaview_create_from_url(argv[1], &picture); error != 0)
    return Fail(argv[1], lumaview_strerror(error));
  Waiting waiting;
  const int status = PrintSize(argv[1], picture, waiting);
  // Reports end here; until then they may use `waiting`.
  lumaview_destroy(&picture);
  return status;
}
