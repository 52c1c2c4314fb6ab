// LineBuilder.h - builds the lines that tell the archiver what to do.
//
//   ZorLineBuilder line("a");                      // a -+ -gm1 -a1 -c1 -m1 -x1 -n
//   line.WorkDirectory("D:\\tmp").Operand("E:\\out\\a.lzh").Operand("x.txt");
//                                                  // ... "-wD:\tmp\" "E:\out\a.lzh" "x.txt"
//
// Pieces stand on the line in the order of the calls.  Each one brings its own blank, and each path
// its quotes; nothing is escaped, as no name may hold a quote.
#pragma once

#include <string>

#include "platform/classlib/ClassLib.h"

// The options at the head of every line but the conversion's.
constexpr char ZorEngineOptions[] = " -+ -gm1 -a1 -c1 -m1 -x1 -n";

// Whether a line can carry the text: it holds no quote.
bool ZorIsSoundOperand(const char* text);

class ZorLineBuilder {
 public:
  // The command letter and the options.  The lines of the memory calls have no letter: "".
  explicit ZorLineBuilder(const char* letter);
  // A line that makes a self-extracting program: it has no options.
  static ZorLineBuilder Conversion();

  // A literal piece, which begins with a blank.
  ZorLineBuilder& Piece(const char* text);
  // Where the archiver keeps its temporaries; beside the archive when `directory` is empty.
  ZorLineBuilder& WorkDirectory(const char* directory);
  ZorLineBuilder& Operand(const char* path);
  // The file that holds the list of names in their place.
  ZorLineBuilder& ResponseOperand(const char* path);

  // False when a path holds a quote: the path would end there, and the rest would name other
  // things.
  bool IsSound() const { return sound; }
  const char* Text() const { return text.c_str(); }

 private:
  ZorLineBuilder() = default;
  ZorLineBuilder& Quoted(const char* prefix, const char* path);

  std::string text;
  bool sound = true;
};
