// CommandLine.cpp - the archiver's command lines, piece by piece.
#include "archive/CommandLine.h"

#include <cstring>

#include "files/Path.h"

CString ZorDirectoryOperand(const char* directory) {
  CString operand = directory;
  if (!operand.IsEmpty()) ZorSetTrailingBackslash(operand, 1);
  return operand;
}

bool ZorIsSoundOperand(const char* text) {
  // A quote is no trail byte in any code page in use, so looking at bytes is right.
  return std::strchr(text, '"') == nullptr;
}

ZorCommandLine::ZorCommandLine(const char* letter) : text(letter) {
  text += ZorEngineOptions;
}

ZorCommandLine ZorCommandLine::Conversion() {
  ZorCommandLine line;
  line.text = "s -gw4";
  return line;
}

ZorCommandLine& ZorCommandLine::Piece(const char* piece) {
  text += piece;
  return *this;
}

ZorCommandLine& ZorCommandLine::WorkDirectory(const char* directory) {
  const CString operand = ZorDirectoryOperand(directory);
  return operand.IsEmpty() ? Piece(" -w0") : Quoted("-w", operand);
}

ZorCommandLine& ZorCommandLine::Operand(const char* path) {
  return Quoted("", path);
}

ZorCommandLine& ZorCommandLine::ResponseOperand(const char* path) {
  return Quoted("@", path);
}

ZorCommandLine& ZorCommandLine::Quoted(const char* prefix, const char* path) {
  if (!ZorIsSoundOperand(path)) sound = false;
  text += " \"";
  text += prefix;
  text += path;
  text += '"';
  return *this;
}
