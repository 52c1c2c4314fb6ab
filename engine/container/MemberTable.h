// MemberTable.h - a compact table of the members of an archive.
//
// An archive may have millions of members, most of them empty.  A member takes about 25 bytes and
// its name.  Numbers have a variable length, with seven bits in each byte.  What is beyond some
// 100,000 members is kept in a temporary file, or in memory if there can't be one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/container/BlockFile.h"
#include "engine/container/Member.h"

namespace kozor::container {

// Several threads may read it.  Reading throws ResultCode::CannotRead if the temporary file fails.
class MemberTable {
 public:
  std::size_t size() const { return places.size(); }
  bool empty() const { return places.empty(); }

  Member operator[](std::size_t position) const;
  // The same without the rest.
  MemberKind KindAt(std::size_t position) const;
  std::string NameAt(std::size_t position) const;

  // Throws ResultCode::NotEnoughMemory beyond 4 GiB.
  void Append(const Member& member);
  void Rename(std::size_t position, std::string_view name);
  // Removes all but the first `count` members.
  void Cut(std::size_t count);

  // Elements are made as they are looked at.
  class Iterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using value_type = Member;
    using difference_type = std::ptrdiff_t;
    using pointer = const Member*;
    using reference = Member;

    Iterator(const MemberTable& all, std::size_t first) : table(&all), position(first) {}
    Member operator*() const { return (*table)[position]; }
    Iterator& operator++() {
      ++position;
      return *this;
    }
    bool operator==(const Iterator&) const = default;

   private:
    const MemberTable* table;
    std::size_t position;
  };
  Iterator begin() const { return {*this, 0}; }
  Iterator end() const { return {*this, size()}; }

 private:
  struct Block {
    std::size_t size = 0;
    std::vector<std::uint8_t> bytes;      // empty if they are in the file
    std::optional<std::uint32_t> stored;  // the number there
  };

  template <typename Use>
  auto WithRecord(std::size_t position, Use use) const;
  void BeginBlock();
  std::uint32_t Store(const Member& member);

  std::vector<std::uint32_t> places;  // positions of the records in all blocks together
  std::vector<Block> blocks;          // no record crosses the end of a block
  std::shared_ptr<BlockFile> file;    // that of all copies of this table
};

}  // namespace kozor::container
