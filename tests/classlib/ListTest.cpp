// ListTest.cpp - CList: order, positions, removal.
#include <gtest/gtest.h>

#include <list>
#include <random>
#include <string>
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

TEST(List, PositionsStayGoodWhileOthersGo) {
  StringList list;
  std::vector<POSITION> positions;
  for (int i = 0; i < 35; ++i) positions.push_back(list.AddTail(std::to_string(i).c_str()));
  for (std::size_t i = 0; i < positions.size(); ++i) {
    if (i % 7 != 3) list.RemoveAt(positions[i]);
  }
  EXPECT_EQ(Contents(list), (std::vector<std::string>{"3", "10", "17", "24", "31"}));
  EXPECT_STREQ(list.GetAt(positions[17]), "17");
  list.GetAt(positions[17]) = "changed";
  EXPECT_EQ(Contents(list)[2], "changed");
}

TEST(List, AgreesWithAnotherListOverManyChanges) {
  std::mt19937 random(5);
  StringList list(3);
  std::list<std::string> expected;
  for (int step = 0; step < 2000; ++step) {
    const std::string text = std::to_string(step % 50);  // equal elements among them
    const auto choice = random() % 5;
    if (step % 100 == 0) {
      list.RemoveAll();
      expected.clear();
    } else if (choice < 2) {
      list.AddTail(text.c_str());
      expected.push_back(text);
    } else if (choice == 2) {
      list.AddHead(text.c_str());
      expected.push_front(text);
    } else if (!expected.empty()) {
      auto victim = expected.begin();
      POSITION position = list.GetHeadPosition();
      for (std::size_t skip = random() % expected.size(); skip > 0; --skip, ++victim) {
        list.GetNext(position);
      }
      expected.erase(victim);
      list.RemoveAt(position);
    }
    ASSERT_EQ(list.IsEmpty(), expected.empty());
    ASSERT_EQ(Contents(list), std::vector<std::string>(expected.begin(), expected.end()));
  }
}

}  // namespace
