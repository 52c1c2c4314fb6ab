// ListTest.cpp - CList: order, positions, removal.
#include <gtest/gtest.h>

#include <list>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "platform/classlib/CList.h"

namespace {

using StringList = CList<CString, const CString&>;

std::vector<std::string> Contents(const StringList& list) {
  std::vector<std::string> forward;
  for (POSITION position = list.GetHeadPosition(); position != nullptr;) {
    forward.emplace_back(list.GetNext(position));
  }
  std::vector<std::string> backward;
  for (POSITION position = list.GetTailPosition(); position != nullptr;) {
    backward.insert(backward.begin(), std::string(list.GetPrev(position)));
  }
  EXPECT_EQ(forward, backward);
  EXPECT_EQ(forward, std::vector<std::string>(list.begin(), list.end()));
  EXPECT_EQ(static_cast<std::size_t>(list.GetCount()), forward.size());
  return forward;
}

// Tracks every element by its position too, which must stay valid whatever happens to the others.
TEST(ClassLibList, AgreesWithAnotherListOverManyChanges) {
  std::mt19937 random(5);
  StringList list(3);
  std::list<std::pair<std::string, POSITION>> expected;
  for (int step = 0; step < 2000; ++step) {
    const std::string text = std::to_string(step % 50);  // equal elements among them
    const auto choice = random() % 5;
    if (step % 100 == 0) {
      list.RemoveAll();
      expected.clear();
    } else if (choice < 2) {
      expected.emplace_back(text, list.AddTail(text.c_str()));
    } else if (choice == 2) {
      expected.emplace_front(text, list.AddHead(text.c_str()));
    } else if (!expected.empty()) {
      const auto victim =
          std::next(expected.begin(), static_cast<std::ptrdiff_t>(random() % expected.size()));
      list.RemoveAt(victim->second);
      expected.erase(victim);
    }
    ASSERT_EQ(list.IsEmpty(), expected.empty());
    std::vector<std::string> texts;
    for (const auto& [element, position] : expected) {
      texts.push_back(element);
      ASSERT_STREQ(list.GetAt(position), element.c_str());
    }
    ASSERT_EQ(Contents(list), texts);
  }
}

}  // namespace
