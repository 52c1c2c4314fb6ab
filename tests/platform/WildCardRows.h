// WildCardRows.h - a table of masks and names, for the matcher of masks and for the calls that
// search.
#pragma once

#include <algorithm>
#include <string_view>
#include <vector>

namespace kozor::test {

// A mask that matches each name of `matches` and none of `others`; names are separated by blanks.
struct WildCardRow {
  std::string_view mask;
  std::string_view matches;
  std::string_view others = {};
};

inline constexpr WildCardRow kWildCardRows[] = {
    // Everything.
    {"*", "a .a a. a.b .. a.b.c"},
    {"*.*", "a .a a.b a.b.c"},
    {"**", "a a.b"},
    {"***", "a"},
    // Nothing but itself.
    {"a", "a A", "b aa ab a.b"},
    {"abc", "abc aBC", "ab abcd xabc"},
    {"a.b", "a.b A.B", "a ab a.bc a.b.c"},
    {".a", ".a", "a b.a"},
    {"a.", "a", "ab a.b"},
    {"a..", "a", "a.b"},
    {"", "", "a ."},
    // Stars in one part.
    {"a*", "a ab a.b a.b.c", "ba"},
    {"*a", "a ba a.a", "ab a.b"},
    {"*a*", "a xax x.a.x", "xyz"},
    {"a*b", "ab axb a.b axxb.b", "a abx"},
    {"*ab", "ab aab aaab abab", "aba"},
    {"*aab", "aab aaab", "ab"},
    {"*a*b*", "ab xaxxbx b.a.b", "xbxxax"},
    {"*a*a*a*", "aaa xaxaxax", "aa"},
    {"a*a", "aa aba aaa", "a ab"},
    // An extension.
    {"*.txt", "a.txt a.b.txt .txt A.TXT", "txt a.txt2 a.tx a.txt.gz"},
    {"a*.txt", "a.txt abc.txt a.b.txt", "bac.txt abc"},
    {"*b.txt", "b.txt ab.txt a.b.txt", "a.txt b"},
    {"*.t*", "a.t a.txt a.b.t", "a.xt"},
    {"*.*.txt", "a.b.txt", "a.txt"},
    {"*.a.*", "x.a.b .a.b x.b.a", "x.b"},
    {"a.*", "a a.b a.b.c", "ab b.a"},
    {".*", ".a .a.b", "a"},
    {"*.tar.gz", "a.tar.gz", "a.gz tar.gz"},
    // No extension.
    {"*.", "a abc", "a.b a.b.c"},
    {"*..", "a", "a.b"},
    {"a*.", "a abc", "a.b b"},
    {"*a.", "a ba a.a", "a.b b"},
    // One character.
    {"?", "a 1", "ab a.b"},
    {"??", "a ab", "abc a.b"},
    {"a?", "a ab", "abc a.b b"},
    {"a??", "a ab abc", "abcd"},
    {"?a", "xa", "a xxa .a"},
    {"a?c", "abc", "ac abbc a.c"},
    {"a?.txt", "a.txt ab.txt", "abc.txt a.b.txt"},
    {"?.?", "a a.b", "ab a.bc aa.b"},
    {"???.???", "a abc a.b abc.def", "abcd a.bcde"},
    {"a.?", "a a.b", "a.bc ab"},
    {"*.?", "a abc a.b a.b.c", "a.bc"},
    {"?*", "a ab a.b"},
    {"*?", "a ab a.b"},
    {"?*.txt", "a.txt abc.txt", "a.b"},
    {"*?b", "ab xab", "a"},
    // Beyond ASCII, and beyond one unit.
    {"日*", "日本 日", "本日"},
    {"?本", "日本", "本"},
    {"É*.TXT", "éa.txt", "ea.txt"},
    {"ж?", "Жя", "жяя"},
    {"😀*", "😀 😀a", "😁"},
    {"[a-c]", "[a-c]", "a b"},
    {"\\a", "\\a", "a"},
};

inline std::vector<std::string_view> Words(std::string_view text) {
  std::vector<std::string_view> words;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(' '), text.size());
    words.push_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return words;
}

}  // namespace kozor::test
