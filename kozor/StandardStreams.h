// StandardStreams.h - standard input and output as bytes, and questions to the user.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace kozor::program {

// Everything up to the end of standard input.  Throws Failure for more than 4 GiB less one byte,
// and Interrupted when a signal comes meanwhile.
std::vector<unsigned char> ReadStandardInput();

// Throws Failure when standard output doesn't take it.
void WriteStandardOutput(const unsigned char* data, std::size_t size);
// The same for text, and for a line of it.
void PrintText(const std::string& text);
void PrintLine(const std::string& line);
// Throws Failure unless everything printed has really been taken.
void FinishStandardOutput();

// Shows `question` on standard error and waits for a line.  False when the user answers with q,
// when the input ends or a signal comes.
bool AskUser(const std::string& question);

}  // namespace kozor::program
