// Console.h - the program's output: lines on standard output, messages on standard error.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

namespace kozor::sfx {

// Sets the program's name, the prefix of messages.  `name` must stay valid until the program ends.
void SetProgramName(std::string_view name);

// Writes a line to standard output, through a buffer.
void Say(std::initializer_list<std::string_view> pieces);
// Writes the buffer.  Returns false if anything could not be written, now or earlier.
bool FlushOutput();

// Flushes the buffer, then writes a line to standard error.
void Complain(std::initializer_list<std::string_view> pieces);

// Writes a message and ends the program with status 1.
[[noreturn]] void Die(std::string_view reason);

// Makes text safe for a terminal: '?' replaces each invalid UTF-8 byte, each control character and
// each character that changes the writing direction.
std::string Visible(std::string_view text);

// Concatenates the pieces.
std::string Join(std::initializer_list<std::string_view> pieces);

// A number in decimal digits, padded on the left to `width`, at most 20.
std::string Decimal(std::uint64_t number, std::size_t width = 1, char fill = ' ');

}  // namespace kozor::sfx
