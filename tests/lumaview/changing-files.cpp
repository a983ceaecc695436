// SPDX-License-Identifier: Apache-2.0
/// changing-files ROUNDS FILE...: decodes copies of the files by turns, in processes of their own, while the copy is
/// cut short, made longer, replaced, removed or written over, at a random moment of the decode. Whatever comes of the
/// picture, neither this process nor the decoder's meets a signal. Exit status: 0 none did; 1 one did; 2 wrong use.
/// CHANGING_FILES_SEED repeats a run.
#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "simulator/lumaview/cage/Cage.h"
#include "simulator/lumaview/picture/FrameStream.h"

using namespace sim;
using namespace sim::lumaview;
namespace fs = std::filesystem;

namespace {

constexpr Size kWindow{1920, 1080};
using Clock = std::chrono::steady_clock;

struct Original {
  std::string bytes;
  Clock::duration decode_time{};
};

class Rounds {
 public:
  Rounds(const std::vector<std::string>& files, unsigned int seed) : m_random(seed) {
    std::string folder = fs::temp_directory_path() / "changing-files-XXXXXX";
    m_path = std::string(mkdtemp(folder.data())) + "/picture";
    for (const std::string& file : files) {
      std::ifstream in(file, std::ios::binary);
      m_originals.push_back({{std::istreambuf_iterator<char>(in), {}}, {}});
    }
  }
  ~Rounds() { fs::remove_all(fs::path(m_path).parent_path()); }
  Rounds(const Rounds&) = delete;
  Rounds& operator=(const Rounds&) = delete;

  /// False when a picture that nobody changes is not shown.
  bool MeasureAll() {
    for (Original& original : m_originals) {
      Write(original.bytes);
      const auto begin = Clock::now();
      if (!Decode()) {
        return false;
      }
      original.decode_time = Clock::now() - begin;
    }
    return true;
  }

  void Run(int round) {
    const Original& original = m_originals[static_cast<size_t>(round) % m_originals.size()];
    Write(original.bytes);
    const auto moment = Clock::now() + original.decode_time * Pick(1000) / 1000;
    std::thread other([this, &original, moment] {
      // The moment counts, not who sleeps: it is spun for.
      while (Clock::now() < moment) {
        std::this_thread::yield();
      }
      Change(original.bytes);
    });
    const Status outcome = Decode();
    other.join();
    ++m_outcomes[outcome ? "shown" : outcome.error().reason];
  }

  /// True when no decoder's process met a signal or ended of itself.
  bool Report() const {
    bool good = true;
    for (const auto& [outcome, times] : m_outcomes) {
      const bool bad = outcome.find("the decoder ") == 0 || outcome.find("the decoders ") == 0;
      std::printf("%s%5d  %s\n", bad ? "BAD " : "    ", times, outcome.c_str());
      good = good && !bad;
    }
    return good;
  }

 private:
  int Pick(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(m_random); }

  void Write(const std::string& bytes) {
    fs::remove(m_path);
    std::ofstream(m_path, std::ios::binary) << bytes;
  }

  Status Decode() {
    const auto file = PictureFile::Open(m_path);
    if (!file) {
      return file.error();
    }
    const auto stream = OpenCagedStream(*GetCage(), *file, std::make_shared<Cancellation>());
    if (!stream) {
      return stream.error();
    }
    const auto frame = (*stream)->RenderNext(View{}, kWindow);
    return frame ? Ok() : Status(frame.error());
  }

  void Change(const std::string& bytes) {
    std::error_code ignored;
    const auto part = static_cast<std::streamoff>(bytes.size()) * Pick(1000) / 1000;
    switch (Pick(6)) {
      case 0:
        fs::resize_file(m_path, static_cast<uintmax_t>(part), ignored);
        break;
      case 1:
        fs::resize_file(m_path, bytes.size() * 3, ignored);
        break;
      case 2:
        std::ofstream(m_path + ".new", std::ios::binary)
            << m_originals[static_cast<size_t>(part) % m_originals.size()].bytes;
        fs::rename(m_path + ".new", m_path, ignored);
        break;
      case 3:
        fs::remove(m_path, ignored);
        break;
      case 4:
        std::ofstream(m_path, std::ios::binary) << bytes.substr(bytes.size() / 2);
        break;
      default: {
        std::fstream file(m_path, std::ios::binary | std::ios::in | std::ios::out);
        file.seekp(part);
        for (int i = 0; i < 4096; ++i) {
          file.put(static_cast<char>(Pick(256)));
        }
      }
    }
  }

  std::mt19937 m_random;
  std::string m_path;
  std::vector<Original> m_originals;
  std::map<std::string, int> m_outcomes;
};

}  // namespace

int main(int argc, char** argv) {
  setenv("LUMAVIEW_CAGE", "on", 1);
  StartCage();
  if (argc < 3 || GetCage() == nullptr) {
    std::fprintf(stderr, "usage: changing-files ROUNDS FILE...\n");
    return 2;
  }
  const char* wanted = std::getenv("CHANGING_FILES_SEED");
  const auto seed =
      wanted != nullptr ? static_cast<unsigned int>(std::strtoul(wanted, nullptr, 10)) : std::random_device{}();
  std::printf("CHANGING_FILES_SEED=%u\n", seed);
  bool good = false;
  {
    Rounds rounds({argv + 2, argv + argc}, seed);
    if (!rounds.MeasureAll()) {
      std::fprintf(stderr, "changing-files: a picture cannot be shown as it is\n");
      return 2;
    }
    for (int round = 0; round < std::atoi(argv[1]); ++round) {
      rounds.Run(round);
    }
    good = rounds.Report();
  }
  StopCage();
  return good ? 0 : 1;
}
