// LineBuilder.cpp - see LineBuilder.h.
#include "archive/LineBuilder.h"

#include <cstring>

#include "files/Path.h"

bool ZorIsSoundOperand(const char* text) {
  // Searching bytes is safe: 0x22 is no trail byte in any supported code page.
  return std::strchr(text, '"') == nullptr;
}

ZorLineBuilder::ZorLineBuilder(const char* letter) : text(letter) {
  text += ZorEngineOptions;
}

ZorLineBuilder ZorLineBuilder::Conversion() {
  ZorLineBuilder line;
  line.text = "s -gw4";
  return line;
}

ZorLineBuilder& ZorLineBuilder::Piece(const char* piece) {
  text += piece;
  return *this;
}

ZorLineBuilder& ZorLineBuilder::WorkDirectory(const char* directory) {
  const CString operand = ZorDirectoryText(directory);
  return operand.IsEmpty() ? Piece(" -w0") : Quoted("-w", operand);
}

ZorLineBuilder& ZorLineBuilder::Operand(const char* path) {
  return Quoted("", path);
}

ZorLineBuilder& ZorLineBuilder::ResponseOperand(const char* path) {
  return Quoted("@", path);
}

ZorLineBuilder& ZorLineBuilder::Quoted(const char* prefix, const char* path) {
  if (!ZorIsSoundOperand(path)) sound = false;
  text += " \"";
  text += prefix;
  text += path;
  text += '"';
  return *this;
}
