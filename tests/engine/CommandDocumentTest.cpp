// SPDX-License-Identifier: Apache-2.0
/// docs/commands.md says what the engine does: the names and their order, which first parameters are needed, and every
/// example with its answer.
#include <algorithm>
#include <fstream>
#include <sstream>

#include "host/CommandTable.h"
#include "tests/engine/CommandGiven.h"

namespace {

/// One row of a table: its cells without blanks around them.
using Cells = std::vector<std::string>;

std::string Trimmed(const std::string& text) {
  const size_t first = text.find_first_not_of(" `");
  const size_t last = text.find_last_not_of(" `");
  return first == text.npos ? "" : text.substr(first, last - first + 1);
}

Cells Split(const std::string& text, char separator) {
  Cells parts;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, separator);) parts.push_back(Trimmed(part));
  return parts;
}

/// The rows with `columns` cells, without the headings and the rules below them.
std::vector<Cells> Rows(size_t columns) {
  std::vector<Cells> rows;
  std::ifstream stream(COMMANDS_DOCUMENT);
  for (std::string line; std::getline(stream, line);) {
    if (!line.starts_with("| ")) continue;
    Cells cells = Split(line.substr(1), '|');
    const bool heading = cells[0] == "No" || cells[0] == "Command" || cells[0] == "Event";
    if (cells.size() == columns && !heading) rows.push_back(cells);
  }
  return rows;
}

std::vector<Cells> Commands() {
  return Rows(8);
}
std::vector<Cells> ListCommands() {
  return Rows(6);
}

std::string Trait(olm::Param1 param1) {
  switch (param1) {
    case olm::Param1::kUnused:
      return "not used";
    case olm::Param1::kNeeded:
      return "needed";
    case olm::Param1::kNeededAndLogged:
      return "needed, logged";
  }
  return "";
}

/// `NAME(one, two)` = `answer`.
struct Example {
  explicit Example(const std::string& cell) {
    const size_t opening = cell.find('(');
    const size_t closing = cell.find(')');
    name = Trimmed(cell.substr(0, opening));
    params = Split(cell.substr(opening + 1, closing - opening - 1), ',');
    answer = Trimmed(cell.substr(cell.find('=') + 1));
  }
  std::string name;
  Cells params;
  std::string answer;
};

/// How the journal shows the answer: integers stand bare, texts in quotation marks.
std::string AsEntry(const std::string& answer) {
  return (answer.starts_with('"') ? "result text " : "result int ") + answer;
}

TEST(TheDocumentOfTheCommands, NamesThemInTheirOrder) {
  const auto documented = Commands();
  const auto table = olm::CommandTable();
  ASSERT_EQ(documented.size(), table.size());
  for (size_t i = 0; i < table.size(); ++i) {
    EXPECT_EQ(documented[i][0], std::to_string(i + 1));
    EXPECT_EQ(documented[i][1], table[i].name);
  }
}

TEST(TheDocumentOfTheCommands, SaysWhichFirstParametersAreNeeded) {
  const auto documented = Commands();
  const auto table = olm::CommandTable();
  ASSERT_EQ(documented.size(), table.size());
  for (size_t i = 0; i < table.size(); ++i) {
    if (documented[i][3] == "own test") {
      EXPECT_EQ(table[i].param1, olm::Param1::kUnused) << table[i].name;
    } else {
      EXPECT_EQ(documented[i][3], Trait(table[i].param1)) << table[i].name;
    }
  }
}

using DocumentedCommands = GivenPreparedPicture;

TEST_F(DocumentedCommands, WithAnOwnTestRefuseEmptyParameters) {
  size_t found = 0;
  for (const Cells& command : Commands()) {
    if (command[3] != "own test") continue;
    ++found;
    kit::Begin();
    EXPECT_TRUE(Send(command[1]));
    EXPECT_EQ(kit::Count("result int 0"), 1U) << command[1];
    EXPECT_EQ(kit::Count("call lumaview") + kit::Count("x "), 0U) << command[1];
  }
  EXPECT_EQ(found, 3U);
}

class Examples : public GivenShownPicture, public testing::WithParamInterface<size_t> {};

TEST_P(Examples, AnswerAsDocumented) {
  const auto documented = Commands();
  ASSERT_LT(GetParam(), documented.size());
  const Example example(documented[GetParam()][7]);
  EXPECT_EQ(example.name, documented[GetParam()][1]);
  kit::Begin();
  EXPECT_TRUE(Send(example.name, example.params));
  EXPECT_EQ(kit::Count("result "), 1U);
  EXPECT_EQ(kit::Count(AsEntry(example.answer)), 1U) << example.name << " answered " << Result();
}

INSTANTIATE_TEST_SUITE_P(All, Examples, testing::Range(size_t{0}, size_t{24}));

TEST_F(DocumentedCommands, OfAParameterListAnswerAsDocumented) {
  const auto documented = ListCommands();
  ASSERT_EQ(documented.size(), 1U);
  const Example example(documented[0][5]);
  EXPECT_EQ(example.name, documented[0][0]);
  olm::ParamList params;
  for (const std::string& text : example.params) params.push_back(text);
  std::string result;
  kit::Begin();
  EXPECT_TRUE(Engine().ExecuteWithParamList(result, example.name, params));
  EXPECT_EQ(kit::Count(AsEntry(example.answer)), 1U) << result;
}

}  // namespace
