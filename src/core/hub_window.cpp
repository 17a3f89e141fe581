#include "core/hub_window.h"

#include <algorithm>

#include "core/dialogs.h"
#include "core/errors.h"
#include "core/event_log.h"
#include "core/player_strip.h"
#include "core/program.h"
#include "core/settings_store.h"

namespace mv {
namespace {

constexpr size_t kClockReadBuffer = 256;

// Clock keys in the order the load reads them (SaveData writes them in the
// order they are bound).
const std::vector<std::string>& loadOrder() {
    static const std::vector<std::string> order = [] {
        std::vector<std::string> o = {"CHECK3", "CONDISC", "TEXT37", "TEXT38", "TEXT39", "FILELOCATION", "VOLSET"};
        for (int i = 1; i <= 10; ++i) o.push_back("OPTION" + std::to_string(i));
        for (const char* k : {"ONHOUR", "QUARTERHOUR", "HALFHOUR", "DTMFTIME", "AMPM", "OPTIONWAV", "OPTIONMP3",
                              "CHECK1", "CHECK2"})
            o.push_back(k);
        for (int i = 4; i <= 8; ++i) o.push_back("TEXT" + std::to_string(i));
        for (int i = 11; i <= 20; ++i) o.push_back("OPTION" + std::to_string(i));
        for (int i = 9; i <= 36; ++i) o.push_back("TEXT" + std::to_string(i));
        o.push_back("LEFT");
        o.push_back("TOP");
        return o;
    }();
    return order;
}

}  // namespace

const std::vector<HubWindow::CaptionField>& HubWindow::captionFields() {
    static const std::vector<CaptionField> fields = {
        {"TEXT9", "Time and Voice", "Horas y Voz"},
        {"TEXT10", "Hour", "Hora"},
        {"TEXT11", "Half Hour", "Media Hora"},
        {"TEXT12", "Quarter Hour", "Cuarto de Hora"},
        {"TEXT13", "12 Hour", "12 Hora"},
        {"TEXT14", "24 Hour", "24 Hora"},
        {"TEXT15", "Voices", "Voces"},
        {"TEXT16", "Voice 1", "Voz 1"},
        {"TEXT17", "Voice 2", "Voz 2"},
        {"TEXT18", "Voice 3", "Voz 3"},
        {"TEXT19", "Voice 4", "Voz 4"},
        {"TEXT20", "Voice 5", "Voz 5"},
        {"TEXT21", "Also Add", "Agregar"},
        {"TEXT22", "AM/PM", "AM/PM"},
        {"TEXT23", "Hr / Min", "Horas/Minutos"},
        {"TEXT24", "Bell 1 - 2 or Preamble", "Tonos 1-2 o Voz"},
        {"TEXT25", "Preamble", "Voz"},
        {"TEXT26", "Local Time", "Hora Local"},
        {"TEXT27", "Say The Time", "Nombre Boton Hora"},
        {"TEXT28", "Volume", "Volumen"},
        {"TEXT29", "wav / mp3  ( Information )", "Informacion wav/mp3"},
        {"TEXT30", "DTMF - Local Time", "DTMF - Hora Local"},
        {"TEXT31", "DTMF Code", "Codigo DTMF"},
        {"TEXT32", "Select Directory Holding Your Audio Files   ( Information )", "Direccion Directorio"},
        {"TEXT33", "About", "Abortar (Bot\xC3\xB3n)"},
        {"TEXT34", "Save", "Salvar (Bot\xC3\xB3n)"},
        {"TEXT35", "Save & Exit", "Salvar/Salir (Bot\xC3\xB3n)"},
        {"TEXT36", "Directory Holding Audio Files  ---  Example -->> C:\\YourFiles\\ ", "Directorio Audio (Info)"},
    };
    return fields;
}

const std::vector<std::string>& HubWindow::startupWindows() {
    // The About box is asked for twice; the second request finds it loaded.
    static const std::vector<std::string> names = {"player", "history", "idents", "dtmf",     "tts",
                                                   "about",  "about",   "courtesy", "keypad"};
    return names;
}

HubWindow::HubWindow(Program& program) : Window(program, "hub"), m_binder(kClockSettingsFile, kClockReadBuffer, "hub") {}

void HubWindow::build() {
    m_relabels.clear();
    m_relabelTargets.clear();
    m_moduleButtons.clear();
    m_groupFallbacks.clear();
    m_voiceFolders.clear();
    m_voiceSelectors.clear();
    m_voiceWav.clear();
    m_voiceMp3.clear();

    auto& root = make<Container>("hubRoot", ContainerKind::Column);
    setRoot(root);
    buildHubButtons(root.add(make<Container>("hubButtons", ContainerKind::Row)));
    auto& tabs = root.add(make<Container>("hubTabs", ContainerKind::Tabs));
    buildConfigurationTab(tabs.add(make<Container>("tabConfiguracion", ContainerKind::TabPage, "Configuraci\xC3\xB3n")));
    buildFilesTab(tabs.add(make<Container>("tabFicheros", ContainerKind::TabPage, "Ficheros")));
    buildLanguageTab(tabs.add(make<Container>("tabLenguaje", ContainerKind::TabPage, "Lenguaje")));
    m_playerStripArea = &root.add(make<Container>("playerStrip", ContainerKind::Column));
    bindSettings();
}

void HubWindow::buildHubButtons(Container& row) {
    const std::vector<std::pair<const char*, const char*>> modules = {
        {"DTMF", "keypad"},       {"Dunmeral", "courtesy"},  {"Balizas", "player"},        {"Abortar", "about"},
        {"Avisos TTS", "tts"},    {"Historial", "history"}, {"Monitor Texto", "messages"},
        // The ident and DTMF control windows run hidden from start-up; these
        // two buttons are how the operator reaches them.
        {"Indicativo", "idents"}, {"Control DTMF", "dtmf"},
    };
    for (const auto& [caption, target] : modules) {
        Button& b = row.add(make<Button>(std::string("btn") + target, caption));
        const std::string name = target;
        b.onClick = [this, name] { showModule(name); };
        m_moduleButtons.push_back({&b, name});
        if (name == "idents") b.setToolTip("Muestra la ventana de indicativo y avisos; oculta, sigue funcionando");
        if (name == "dtmf") b.setToolTip("Muestra la ventana de control DTMF; oculta, sigue funcionando");
    }
    Button& save = row.add(make<Button>("btnSave", "Guardar"));
    save.onClick = [this] { saveData(); };
    setSaveButton(save);
    Button& saveExit = row.add(make<Button>("btnSaveExit", ">>>>>>>>  Guardar y Salir  <<<<<<<<"));
    saveExit.onClick = [this] {
        saveData();
        // No prompt and no unkeying of its own here, but the program's end
        // releases the transmitter all the same: an unattended node left
        // keyed by a save-and-exit would stay on the air until someone came.
        program().end("save and exit");
    };
    Button& defaultVoice = row.add(make<Button>("btnDefaultVoice1", "Defalt Voice 1"));
    defaultVoice.onClick = [this] {
        m_voiceFolders[0]->setText(program().defaultVoiceFolder());
        m_voiceWav[0]->setValue(true);
    };
    relabelledBy("TEXT34", save);
    relabelledBy("TEXT35", saveExit);
}

void HubWindow::buildConfigurationTab(Container& page) {
    auto& top = page.add(make<Container>("clockRow", ContainerKind::Row));
    m_showTheTime = &top.add(make<Label>("ShowTheTime", "00:00:00"));
    auto& localTime = top.add(make<Label>("LocalTimeLabel", "Local Time"));
    m_ptt2 = &top.add(make<Label>("PTT2", kPttOff, kPttOffGreen));
    m_ptt = &top.add(make<Label>("PTT", kPttOff, kPttOffGreen));

    auto& grid = page.add(make<Container>("configGrid", ContainerKind::Grid, "", 3));

    auto& timeVoice = grid.add(make<Container>("frameTimeVoice", ContainerKind::Frame, "Time and Voice"));
    OptionGroup& hours = makeGroup();
    auto& opt1 = timeVoice.add(make<OptionButton>("OPTION1", "12 Hour", hours));
    auto& opt2 = timeVoice.add(make<OptionButton>("OPTION2", "24 Hour", hours));
    opt2.setValue(true);
    m_groupFallbacks.push_back({&hours, &opt2});
    auto& onHour = timeVoice.add(make<CheckBox>("ONHOUR", "Hour", 1));
    auto& halfHour = timeVoice.add(make<CheckBox>("HALFHOUR", "Half Hour", 1));
    auto& quarterHour = timeVoice.add(make<CheckBox>("QUARTERHOUR", "Quarter Hour", 1));

    auto& voices = grid.add(make<Container>("frameVoices", ContainerKind::Frame, "Voices"));
    OptionGroup& voiceGroup = makeGroup();
    for (const char* name : {"OPTION3", "OPTION4", "OPTION7", "OPTION8", "OPTION10"}) {
        const std::string caption = "Voice " + std::to_string(m_voiceSelectors.size() + 1);
        m_voiceSelectors.push_back(&voices.add(make<OptionButton>(name, caption, voiceGroup)));
    }
    m_voiceSelectors[0]->setValue(true);
    m_groupFallbacks.push_back({&voiceGroup, m_voiceSelectors[0]});

    auto& alsoAdd = grid.add(make<Container>("frameAlsoAdd", ContainerKind::Frame, "Also Add"));
    auto& ampm = alsoAdd.add(make<CheckBox>("AMPM", "AM/PM", 1));
    auto& words = alsoAdd.add(make<CheckBox>("CHECK1", "Hr / Min", 1));
    auto& prefix = alsoAdd.add(make<CheckBox>("CHECK2", "Bell 1 - 2 or Preamble", 1));
    OptionGroup& prefixGroup = makeGroup();
    auto& bell1 = alsoAdd.add(make<OptionButton>("OPTION5", "1", prefixGroup));
    alsoAdd.add(make<OptionButton>("OPTION6", "2", prefixGroup));
    auto& preamble = alsoAdd.add(make<OptionButton>("OPTION9", "Preamble", prefixGroup));
    bell1.setValue(true);
    m_groupFallbacks.push_back({&prefixGroup, &bell1});

    auto& volumeFrame = grid.add(make<Container>("frameVolume", ContainerKind::Frame, "Volume"));
    m_volume = &volumeFrame.add(make<Slider>("VolumeSlider", -3000, 0, 0));
    m_volume->setSteps(50, 500);
    m_volume->scaleLabels = {"0%", "50%", "100%"};
    m_volSet = &volumeFrame.add(make<TextBox>("VOLSET", "0"));
    m_volume->onChange = [this] { m_volSet->setText(std::to_string(m_volume->value())); };

    auto& fileType = grid.add(make<Container>("frameFileType", ContainerKind::Frame, "wav / mp3  ( Information )"));
    OptionGroup& typeGroup = makeGroup();
    auto& wav = fileType.add(make<OptionButton>("OPTIONWAV", "wav", typeGroup));
    fileType.add(make<OptionButton>("OPTIONMP3", "mp3", typeGroup));
    wav.setValue(true);
    m_groupFallbacks.push_back({&typeGroup, &wav});

    auto& dtmfFrame = grid.add(make<Container>("frameDtmfTime", ContainerKind::Frame, "DTMF - Local Time"));
    auto& dtmfLabel = dtmfFrame.add(make<Label>("DTMFCodeLabel", "DTMF Code"));
    dtmfFrame.add(make<TextBox>("DTMFTIME", "123"));

    m_sayTheTime = &grid.add(make<Button>("btnSayTheTime", "Say The Time"));

    auto& folderFrame = grid.add(make<Container>(
        "frameFolderInUse", ContainerKind::Frame, "Select Directory Holding Your Audio Files   ( Information )"));
    auto& fileLocation = folderFrame.add(make<TextBox>("FILELOCATION", program().defaultVoiceFolder()));
    fileLocation.setReadOnly(true);

    auto& autoConnect = grid.add(make<Container>("frameAutoConnect", ContainerKind::Frame, "Conecion Automatica"));
    autoConnect.add(make<CheckBox>("CHECK3", "Activado", 1));
    autoConnect.add(make<Label>("lblConference", "Conferencia"));
    autoConnect.add(make<TextBox>("TEXT37", kDefaultConference));
    autoConnect.add(make<Label>("lblAutoConnectCode", "DTMF On/Off"));
    autoConnect.add(make<TextBox>("TEXT38", ""));
    m_connectButton = &autoConnect.add(make<Button>("btnConnect", "Conectar/Desconectar"));

    auto& stations = grid.add(make<Container>("frameStations", ContainerKind::Frame, "Anuncio Estaciones"));
    stations.add(make<CheckBox>("CONDISC", "Activado / Desactivado", 1));
    stations.add(make<Label>("lblStationsCode", "DTMF On/Off"));
    stations.add(make<TextBox>("TEXT39", ""));

    // The parts of the time the composer reads; refreshed by the clock tick.
    m_hh = &page.add(make<TextBox>("HH", ""));
    m_mm = &page.add(make<TextBox>("MM", ""));
    m_amPm = &page.add(make<TextBox>("AM_PM", ""));
    for (TextBox* t : {m_hh, m_mm, m_amPm}) t->setVisible(false);

    const std::pair<const char*, Control*> relabelled[] = {
        {"TEXT9", &timeVoice},   {"TEXT10", &onHour},     {"TEXT11", &halfHour},   {"TEXT12", &quarterHour},
        {"TEXT13", &opt1},       {"TEXT14", &opt2},       {"TEXT15", &voices},     {"TEXT21", &alsoAdd},
        {"TEXT22", &ampm},       {"TEXT23", &words},      {"TEXT24", &prefix},     {"TEXT25", &preamble},
        {"TEXT26", &localTime},  {"TEXT27", m_sayTheTime}, {"TEXT28", &volumeFrame}, {"TEXT29", &fileType},
        {"TEXT30", &dtmfFrame},  {"TEXT31", &dtmfLabel},  {"TEXT32", &folderFrame},
    };
    for (const auto& [key, element] : relabelled) relabelledBy(key, *element);
    for (size_t v = 0; v < m_voiceSelectors.size(); ++v) relabelledBy("TEXT" + std::to_string(16 + v), *m_voiceSelectors[v]);
}

void HubWindow::buildFilesTab(Container& page) {
    auto& all = page.add(make<Container>("frameVoiceFolders", ContainerKind::Frame,
                                         "Directory Holding Audio Files  ---  Example -->> C:\\YourFiles\\ "));
    relabelledBy("TEXT36", all);
    // Each voice's folder key and its file-type pair as (wav, mp3).
    struct VoiceKeys {
        const char* folder;
        const char* wav;
        const char* mp3;
    };
    const VoiceKeys keys[] = {{"TEXT4", "OPTION11", "OPTION12"},
                              {"TEXT5", "OPTION14", "OPTION13"},
                              {"TEXT6", "OPTION16", "OPTION15"},
                              {"TEXT7", "OPTION17", "OPTION18"},
                              {"TEXT8", "OPTION20", "OPTION19"}};
    for (int v = 0; v < 5; ++v) {
        const std::string n = std::to_string(v + 1);
        // One line a voice: folder, file type, "Default".
        auto& frame = all.add(make<Container>("frameVoice" + n, ContainerKind::Frame, "Voice " + n, 4));
        relabelledBy("TEXT" + std::to_string(16 + v), frame);
        auto& folder = frame.add(make<TextBox>(keys[v].folder, v == 0 ? program().defaultVoiceFolder() : ""));
        OptionGroup& type = makeGroup();
        auto& wav = frame.add(make<OptionButton>(keys[v].wav, "wav", type));
        auto& mp3 = frame.add(make<OptionButton>(keys[v].mp3, "mp3", type));
        wav.setValue(true);
        m_groupFallbacks.push_back({&type, &wav});
        Button& def = frame.add(make<Button>("btnDefaultVoice" + n, "Default"));
        def.onClick = [this, &folder] { folder.setText(program().defaultVoiceFolder()); };
        m_voiceFolders.push_back(&folder);
        m_voiceWav.push_back(&wav);
        m_voiceMp3.push_back(&mp3);
    }
}

void HubWindow::buildLanguageTab(Container& page) {
    page.add(make<Label>("lblLanguageHelp",
                         "Cambie el texto de programa a su idioma sin alterar los compos aportados"));
    auto& grid = page.add(make<Container>("languageGrid", ContainerKind::Grid, "", 4));
    const auto& fields = captionFields();
    for (size_t i = 0; i < fields.size(); ++i) {
        grid.add(make<Label>("lbl" + fields[i].key, fields[i].spanishLabel));
        // TEXT33 relabels nothing: its list stays empty.
        m_relabels.push_back({&grid.add(make<TextBox>(fields[i].key, fields[i].defaultText)),
                              m_relabelTargets[fields[i].key]});
    }
}

void HubWindow::bindSettings() {
    m_binder = SettingsBinder(kClockSettingsFile, kClockReadBuffer, name());
    auto bind = [this](const std::string& key, const std::string& def) { bindSetting(m_binder, key, def); };
    const std::string folder = program().defaultVoiceFolder();
    bind("TEXT37", kDefaultConference);
    bind("TEXT38", "");
    bind("TEXT39", "");
    bind("CHECK3", "1");
    bind("CONDISC", "1");
    bind("FILELOCATION", folder);
    bind("VOLSET", "0");
    const char* optionDefaults[] = {"0", "1", "1", "0", "1", "0", "0", "0", "0", "0"};
    for (int i = 1; i <= 10; ++i) bind("OPTION" + std::to_string(i), optionDefaults[i - 1]);
    bind("ONHOUR", "1");
    bind("QUARTERHOUR", "1");
    bind("HALFHOUR", "1");
    bind("DTMFTIME", "123");
    bind("AMPM", "1");
    bind("OPTIONWAV", "1");
    bind("OPTIONMP3", "0");
    bind("CHECK1", "1");
    bind("CHECK2", "1");
    bind("TEXT4", folder);
    for (int i = 5; i <= 8; ++i) bind("TEXT" + std::to_string(i), "");
    const char* voiceTypeDefaults[] = {"1", "0", "0", "1", "0", "1", "1", "0", "0", "1"};
    for (int i = 11; i <= 20; ++i) bind("OPTION" + std::to_string(i), voiceTypeDefaults[i - 11]);
    for (const CaptionField& f : captionFields()) bind(f.key, f.defaultText);
    bindWindowPosition(m_binder, "300");
}

void HubWindow::onLoad() {
    createHostObject();
    setModuleCaption("       Quillasp");
    host().setPTT(false);

    m_binder.load(settings(), log(), loadOrder());
    for (auto& [group, fallback] : m_groupFallbacks) ensureOneSelected(*group, *fallback);
    restoreVolume(*m_volume, *m_volSet, log(), name(), kClockSettingsFile);
    afterSettingsLoaded();

    for (const std::string& w : startupWindows())
        if (Window* module = program().window(w)) module->load();
    for (auto& [button, target] : m_moduleButtons) button->setEnabled(program().window(target) != nullptr);

    makeTimer("PTT2Refresh", 100, true, [this] { mirrorTransmitter(); });
    makeTimer("CaptionRefresh", 500, true, [this] { refreshCaptions(); });
    startClockTimers();
}

void HubWindow::setPtt(bool on) { m_ptt->showPtt(on); }

void HubWindow::mirrorTransmitter() {
    const bool on = host().isTransmitting();
    m_ptt2->showPtt(on);
}

void HubWindow::refreshCaptions() {
    for (auto& [field, targets] : m_relabels)
        for (Control* c : targets) c->setCaption(field->text());
}

void HubWindow::showModule(const std::string& windowName) {
    if (Window* w = program().window(windowName)) w->show();
}

void HubWindow::saveData() { saveSettings(m_binder); }

void HubWindow::onChatTextReceived(const std::string& text) {
    if (text.find("/ver/") == std::string::npos) return;
    host().sendChatText(program().product().versionReply());
}

void HubWindow::onClosing() {
    // Whatever fails on the way out, the program still ends.
    ignoreErrors({[this] { host().setPTT(false); }, [this] { host().setDTR(false); }});
    program().end("host closing");
}

Window::CloseDecision HubWindow::onQueryClose() {
    const DialogAnswer answer = dialogs().message({name(), "Salir del Programa", "Salir del programa - Esta Usted Seguro ? ",
                                                   DialogIcon::Question, DialogButtons::YesNo});
    if (answer != DialogAnswer::Yes) return CloseDecision::Cancel;
    setPtt(false);
    ignoreErrors([this] { host().setPTT(false); });
    program().end("quit");
}

}  // namespace mv
