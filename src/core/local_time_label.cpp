#include "core/local_time_label.h"

#include "core/program.h"

namespace mv {

Label& addLocalTimeLabel(WindowParts parts, Container& row, const std::string& name, const std::string& caption) {
    Scheduler& scheduler = parts.window().program().scheduler();
    // Right from the start, not "00:00:00" for the first second.
    Label& clock = row.add(parts.make<Label>(name, scheduler.wallNow().timeText()));
    row.add(parts.make<Label>(name + "Caption", caption));
    parts.makeTimer(name + "Tick", 1000, true, [&clock, &scheduler] { clock.setCaption(scheduler.wallNow().timeText()); });
    return clock;
}

}  // namespace mv
