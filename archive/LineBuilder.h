// LineBuilder.h - builds the archiver's command lines.
//
//   ZorLineBuilder line("a");                      // a -+ -gm1 -a1 -c1 -m1 -x1 -n
//   line.WorkDirectory("D:\\tmp").Operand("E:\\out\\a.lzh").Operand("x.txt");
//                                                  // ... "-wD:\tmp\" "E:\out\a.lzh" "x.txt"
//
// Pieces are appended in the order of the calls, each after a blank, paths in quotes.  There is no
// escaping: a name must not hold a quote.
#pragma once

#include <string>

#include "platform/classlib/ClassLib.h"

// The options that begin every line except the one for a conversion.
constexpr char ZorEngineOptions[] = " -+ -gm1 -a1 -c1 -m1 -x1 -n";

// Whether the text can be part of a line: it holds no quote.
bool ZorIsSoundOperand(const char* text);

class ZorLineBuilder {
 public:
  // The command letter and the options.  The lines of the memory calls have no letter: "".
  explicit ZorLineBuilder(const char* letter);
  // The line that makes a self-extracting program, without options.
  static ZorLineBuilder Conversion();

  // Appends a literal piece; it must begin with a blank.
  ZorLineBuilder& Piece(const char* text);
  // The directory for the archiver's temporaries; if it is empty they are made beside the archive.
  ZorLineBuilder& WorkDirectory(const char* directory);
  ZorLineBuilder& Operand(const char* path);
  // A response file, which holds the names to add.
  ZorLineBuilder& ResponseOperand(const char* path);

  // False if a path holds a quote: the path would end there, and the rest would be read as other
  // operands.
  bool IsSound() const { return sound; }
  const char* Text() const { return text.c_str(); }

 private:
  ZorLineBuilder() = default;
  ZorLineBuilder& Quoted(const char* prefix, const char* path);

  std::string text;
  bool sound = true;
};
