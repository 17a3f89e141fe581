#include "idents/speech_editor.h"

#include "core/dialogs.h"
#include "core/errors.h"
#include "core/event_log.h"
#include "core/program.h"
#include "idents/ident_window.h"
#include "idents/speech_engine.h"

namespace mv {
namespace {

constexpr const char* kEditorText =
    "Escriba aqui el Texto que desea guardar en formato \nwav. Para escucha pulse Reproducir. Para guardar, marque "
    "guardar y pulse Reproducir, Gracias.";

}  // namespace

SpeechEditor::SpeechEditor(IdentWindow& window) : m_window(window) {}

void SpeechEditor::build(WindowParts parts, Container& page) {
    m_text = &page.add(parts.make<TextBox>("TextField", kEditorText));
    m_text->setMultiLine(true);
    auto& row = page.add(parts.make<Container>("rowEditorButtons", ContainerKind::Row));
    m_saveToWave = &row.add(parts.make<CheckBox>("SaveToWave", "Guardar a wav"));
    m_saveToWave->setToolTip("Marque aqui para guardar el texto en fichero wav");
    auto& play = row.add(parts.make<Button>("btnReproducir", "Reproducir"));
    play.setToolTip("Reproducir y Guardar");
    play.onClick = [this] { SpeechEditor::play(); };
    auto& hide = row.add(parts.make<Button>("btnOcultarEditor", "Ocultar"));
    hide.setToolTip("Salir del eeditor de Texto");
    hide.onClick = [this] { m_window.hide(); };
}

void SpeechEditor::play() {
    try {
        if (m_saveToWave->ticked())
            saveSpeechToWave();
        else if (!m_text->text().empty())
            m_window.speech().sayUnkeyed(m_text->text());
    } catch (const std::exception& e) {
        Program& program = m_window.program();
        program.log().error(m_window.name(), std::string("speech failed: ") + e.what());
        program.dialogs().message({m_window.name(), program.product().name, "Speak Error!", DialogIcon::None, DialogButtons::OK});
    }
}

void SpeechEditor::saveSpeechToWave() {
    Program& program = m_window.program();
    FileRequest request{m_window.name(), "Save to a Wave File", "All Files (*.*)|*.*|Wave Files (*.wav)|*.wav", ""};
    request.selectedFilter = 1;
    const std::optional<std::string> path = program.dialogs().saveFile(request);
    if (!path) return;
    try {
        m_window.speech().sayToWave(m_text->text(), *path);
    } catch (const std::exception& e) {
        program.log().error(m_window.name(), "no wave file written: " + std::string(e.what()));
    }
}

}  // namespace mv
