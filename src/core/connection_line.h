#pragma once
// One connect as the suite's connection lists show it:
// " 2:05 PM -- N0CALL -- Juan -- 10.0.0.7" (12-hour clock, no leading zero,
// 12:30 AM just after midnight, 12:00 PM at noon). The station's three texts
// go in as the host gave them.
#include <string>

#include "core/local_time.h"

namespace mv {

std::string connectionLine(const LocalDateTime& at, const std::string& call, const std::string& name,
                           const std::string& address);

}  // namespace mv
