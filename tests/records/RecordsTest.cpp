// SPDX-License-Identifier: Apache-2.0
/// docs/records.md says where the fields lie that the engine and the closed libraries share; this build's compiler says
/// where they really lie. Every build checks the columns of its own pointer size and text type.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "platform/lumaview.h"
#include "platform/olm_emp.h"
#include "platform/vconf.h"

namespace {

/// Bytes from the record's beginning, and how many the field takes.
struct Place {
  std::string record;
  std::string field;
  size_t offset;
  size_t bytes;
};

bool operator==(const Place& a, const Place& b) {
  return a.record == b.record && a.field == b.field && a.offset == b.offset && a.bytes == b.bytes;
}

void PrintTo(const Place& place, std::ostream* out) {
  *out << place.record << "." << place.field << " at " << place.offset << ", " << place.bytes << " bytes";
}

std::string Trimmed(const std::string& text) {
  const size_t first = text.find_first_not_of(" `");
  const size_t last = text.find_last_not_of(" `");
  return first == text.npos ? "" : text.substr(first, last - first + 1);
}

std::vector<std::string> Cells(const std::string& row) {
  std::vector<std::string> cells;
  std::istringstream stream(row.substr(1));
  for (std::string cell; std::getline(stream, cell, '|');) cells.push_back(Trimmed(cell));
  return cells;
}

/// The rows below the heading `| Record | Field | ... |`, as the columns headed `offset` and `bytes` have them.
std::vector<Place> Documented(const std::string& offset, const std::string& bytes) {
  std::vector<Place> places;
  std::vector<std::string> headings;
  std::ifstream document(RECORDS_DOCUMENT);
  for (std::string line; std::getline(document, line);) {
    if (!line.starts_with("|")) headings.clear();
    if (line.starts_with("| Record")) headings = Cells(line);
    if (!line.starts_with("| `") || headings.empty()) continue;
    const std::vector<std::string> cells = Cells(line);
    const auto column = [&](const std::string& heading) {
      return static_cast<size_t>(std::ranges::find(headings, heading) - headings.begin());
    };
    if (column(offset) >= cells.size() || column(bytes) >= cells.size()) continue;
    places.push_back({cells[0], cells[1], std::stoul(cells[column(offset)]), std::stoul(cells[column(bytes)])});
  }
  return places;
}

const std::string kPointers = sizeof(void*) == 4 ? "32-bit" : "64-bit";

/// The framework's texts are reached through an object: their class has virtual functions, for which offsetof promises
/// nothing.
class Application : public olm::CEmpAppBase {
 public:
  std::vector<Place> Texts() {
    return {At("m_strEngineName", m_strEngineName), At("m_strEngineId", m_strEngineId),
            At("m_strVersion", m_strVersion), At("m_strEngineType", m_strEngineType)};
  }

 private:
  Place At(const std::string& field, const std::string& text) {
    const auto distance = reinterpret_cast<const char*>(&text) - reinterpret_cast<const char*>(this);
    return {"CEmpAppBase", field, static_cast<size_t>(distance), sizeof text};
  }
};

#define PLACE(record, field)                                        \
  Place {                                                           \
#record, #field, offsetof(record, field), sizeof(record::field) \
  }

TEST(TheDocumentOfTheRecords, SaysWhereTheFieldsOfTheCLibrariesLie) {
  const std::vector<Place> compiled = {
      PLACE(_lumaview_s, user_data),
      PLACE(_lumaview_s, flag),
      PLACE(_lumaview_effect_s, user_data),
      {"lumaview_display_param_s", "field[8]", 4 * kDisplayParamZoomRatio, sizeof(lumaview_display_param_s::field[8])},
      {"lumaview_display_param_s", "field[9]", 4 * kDisplayParamRotation, sizeof(lumaview_display_param_s::field[9])},
      PLACE(keynode_t, keyname),
      PLACE(keynode_t, type),
      PLACE(keynode_t, value.s),
  };
  EXPECT_EQ(Documented(kPointers + " offset", kPointers + " bytes"), compiled);
}

TEST(TheDocumentOfTheRecords, SaysWhereTheTextsOfTheApplicationLie) {
  const std::string texts = kPointers + (_GLIBCXX_USE_CXX11_ABI ? " new" : " old");
  EXPECT_EQ(Documented(texts + " offset", texts + " bytes"), Application().Texts());
}

TEST(TheDocumentOfTheRecords, HasTheColumnsOfEveryBuild) {
  for (const std::string pointers : {"32-bit", "64-bit"}) {
    EXPECT_EQ(Documented(pointers + " offset", pointers + " bytes").size(), 8U) << pointers;
    for (const std::string text : {" new", " old"})
      EXPECT_EQ(Documented(pointers + text + " offset", pointers + text + " bytes").size(), 4U) << pointers << text;
  }
}

}  // namespace
