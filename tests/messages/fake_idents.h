#pragma once
// Stands in for the ident window where the text windows meet it: its speech
// desk and its "Mensaje Texto" box (SayText). Records what it was handed.
#include "core/module_surfaces.h"
#include "core/window.h"

namespace mv::test {

class FakeIdents final : public Window, public SpeechDesk {
public:
    explicit FakeIdents(Program& program) : Window(program, "idents") {}

    void setSpeechText(const std::string& text) override { m_text = text; }
    const std::string& speechText() const override { return m_text; }
    void setSpeechPending(bool pending) override { m_pending = pending; }
    bool speechPending() const override { return m_pending; }
    void setSkipSpeechDelay(bool) override {}
    void speakTheText() override { ++spokenNow; }

    CheckBox& sayText() { return *controlAs<CheckBox>("SayText"); }
    int spokenNow = 0;

protected:
    void build() override {
        auto& root = make<Container>("identsRoot", ContainerKind::Column);
        setRoot(root);
        root.add(make<CheckBox>("SayText", "Mensaje Texto", 0));
    }

private:
    std::string m_text;
    bool m_pending = false;
};

}  // namespace mv::test
