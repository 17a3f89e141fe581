#pragma once
// Morse code timing on the PARIS standard: a dot is 1200 / WPM milliseconds, a
// dash three dots, one dot between the elements of a letter, three between
// letters and seven between words. Gives the keyed elements of a text so the
// host can key the transmitter for exactly that long and the air can sound it.
#include <cstdint>
#include <string>
#include <vector>

namespace mv::morse {

struct Element {
    int64_t startMs;     // from the start of the text
    int64_t durationMs;  // tone on
};

// The pattern of one character ('.' and '-'), or empty for one Morse lacks.
std::string pattern(char c);
double dotMs(int wpm);
// Elements of the whole text; characters without a pattern are skipped.
std::vector<Element> elements(const std::string& text, int wpm);
// From the first element's start to the last element's end.
int64_t durationMs(const std::string& text, int wpm);

}  // namespace mv::morse
