#pragma once
// The ident window's own end-of-over letters in Morse, sent by the host: one
// after an Internet station stops talking (held back while a local station
// holds the carrier) and one after a local carrier that outlasted the
// kerchunk filter drops. Silence mode silences both.
#include <memory>

#include "core/kerchunker.h"
#include "core/settings_binder.h"
#include "core/window.h"

namespace mv {

class IdentWindow;

class CourtesyLetters {
public:
    explicit CourtesyLetters(IdentWindow& window);
    ~CourtesyLetters();

    // The "Courtesy Tone " frame into `parent`; binds its options.
    void build(WindowParts parts, Container& parent, SettingsBinder& binder);
    // At load, once the options are read: the filter's periods from the fields.
    void applyPeriods() { m_kerchunker->applyPeriods(); }

    void onRX(bool receiving);
    void onCarrierDetect(bool carrier) { m_kerchunker->carrierDetect(carrier); }

    Kerchunker& filter() { return *m_kerchunker; }

private:
    void sendLetter(const TextBox& letter);

    IdentWindow& m_window;
    CheckBox* m_use = nullptr;
    TextBox* m_rfLetter = nullptr;
    TextBox* m_internetLetter = nullptr;
    std::unique_ptr<Kerchunker> m_kerchunker;
};

}  // namespace mv
