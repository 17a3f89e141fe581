#pragma once
// An empty window that takes a module window's place in a test, so the suite
// runs without that module: it offers no surface, makes no host call and
// does nothing on its timers, because it has none.
#include <string>
#include <utility>

#include "core/window.h"

namespace mv::test {

class StandInWindow final : public Window {
public:
    StandInWindow(Program& program, std::string name) : Window(program, std::move(name)) {}

protected:
    void build() override { setRoot(make<Container>(name() + "Root", ContainerKind::Column)); }
};

}  // namespace mv::test
