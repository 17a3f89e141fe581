#pragma once
// The suite's one rule for a received DTMF string against a code the
// operator set: the whole string, exactly, case-sensitive. A code left empty
// is switched off and never matches, not even an empty string.
#include <string_view>

namespace mv {

inline bool dtmfCodeMatches(std::string_view received, std::string_view code) {
    return !code.empty() && received == code;
}

}  // namespace mv
