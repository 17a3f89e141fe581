#include "idents/courtesy_letters.h"

#include "core/errors.h"
#include "core/program.h"
#include "idents/ident_window.h"
#include "idents/speech_engine.h"

namespace mv {

CourtesyLetters::CourtesyLetters(IdentWindow& window) : m_window(window) {}

CourtesyLetters::~CourtesyLetters() = default;

void CourtesyLetters::build(WindowParts parts, Container& parent, SettingsBinder& binder) {
    auto& frame = parent.add(parts.make<Container>("frameCourtesyLetters", ContainerKind::Frame, "Courtesy Tone "));
    m_use = &frame.add(parts.make<CheckBox>("UseCT", "Use ID"));
    m_use->setToolTip("Use CW End of Over");
    auto letterField = [&](const char* name, const char* caption, const char* tip, const char* letter) -> TextBox& {
        auto& row = frame.add(parts.make<Container>(std::string("row") + name, ContainerKind::Row));
        row.add(parts.make<Label>(std::string("lbl") + name, caption));
        TextBox& field = row.add(parts.make<TextBox>(name, letter));
        field.setToolTip(tip);
        field.setUpperCase(true);
        field.setMaxLength(kCourtesyLetterMaxLength);
        field.onChange = [&field] { field.setUpperCase(true); };
        return field;
    };
    m_rfLetter = &letterField("CourtesyID", "RF CW ID", "RF CW Ident Letter", "K");
    m_internetLetter = &letterField("IPCourtesy", "Internet CW ID", "Internet CW Ident Letter", "I");
    auto periodField = [&](const char* name, const char* caption, const char* tip, const char* ms) -> TextBox& {
        auto& row = frame.add(parts.make<Container>(std::string("row") + name, ContainerKind::Row));
        row.add(parts.make<Label>(std::string("lbl") + name, caption));
        TextBox& field = row.add(parts.make<TextBox>(name, ms));
        field.setToolTip(tip);
        row.add(parts.make<Label>(std::string("lbl") + name + "Ms", "ms"));
        return field;
    };
    TextBox& hangTime = periodField("HangTime", "HangTime Before ID ", "Hang Time Before ID in xx Milliseconds", "500");
    TextBox& kerchunkWait =
        periodField("KerchunkWait", "Anti-Kerchunker", "Anti-Kerchunker time in Milliseconds", "3000");
    Label& ok = frame.add(parts.make<Label>("OK2Kerchunk", Kerchunker::kNotAccepted));

    KerchunkerOptions o;
    o.kerchunkWaitMs = 3000;
    o.hangTimeMs = 500;
    o.runningFromLoad = true;
    // A period field emptied becomes "0", and a period of 0 never ticks: an
    // operator can switch either letter off that way.
    o.badPeriod = KerchunkerOptions::BadPeriod::ZeroStops;
    o.lettersEnabled = [this] { return m_use->ticked(); };
    o.silenced = [this] { return m_window.speech().announcementsDisabled(); };
    o.internetLetterWithheldUnderCarrier = true;
    o.beforeTick = [this] { m_window.restateHostWait(); };
    m_kerchunker = std::make_unique<Kerchunker>(
        parts, kerchunkWait, hangTime, ok, std::move(o), [this] { sendLetter(*m_rfLetter); },
        [this] { sendLetter(*m_internetLetter); });

    binder.bindCheck("USECT", *m_use, "0");
    binder.bindText("COURTESYID", *m_rfLetter, "K");
    binder.bindText("IPCOURTESY", *m_internetLetter, "I");
    binder.bindText("HANGTIME", hangTime, "500");
    binder.bindText("KERCHUNKWAIT", kerchunkWait, "3000");
}

void CourtesyLetters::onRX(bool receiving) {
    // A letter the host refuses is logged by the call itself.
    if (!receiving) ignoreErrors([this] { m_kerchunker->internetAudioEnded(); });
}

void CourtesyLetters::sendLetter(const TextBox& letter) { m_window.host().sendCW(0, letter.text()); }

}  // namespace mv
