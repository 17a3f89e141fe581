// A settings file reads as Windows reads it, in every encoding an operator
// brings along, and an edit touches only the lines it owns.
#include "core/settings_text.h"

#include <gtest/gtest.h>

#include <random>

#include "support/windows_profile.h"

namespace mv {
namespace {

using namespace std::string_literals;
using test::cp1252;
using test::utf16be;
using test::utf16le;
using test::WindowsProfile;

std::string valueOf(const std::string& bytes, const std::string& key, size_t buffer = 256) {
    return SettingsText(bytes).value("SETTINGS", key, "dflt", buffer);
}

struct Case {
    const char* what;
    std::string file;
    const char* key;
    std::string windowsReads;
    size_t buffer = 256;
};

// File texts, and what GetPrivateProfileString returns for them.
const std::vector<Case>& windowsCases() {
    static const std::vector<Case> cases = {
        // Only the first SETTINGS section is read.
        {"header twice", "[SETTINGS]\r\nA=1\r\n[SETTINGS]\r\nA=2\r\nB=2\r\n", "A", "1"},
        {"key only in the second", "[SETTINGS]\r\nA=1\r\n[SETTINGS]\r\nB=2\r\n", "B", "dflt"},
        {"split by another section", "[SETTINGS]\r\nA=1\r\n[OTHER]\r\nX=0\r\n[settings]\r\nB=2\r\n", "B", "dflt"},
        {"first in another case", "[Settings]\nA=first\n[SETTINGS]\nA=second\n", "A", "first"},
        // The section name runs to the last ']'.
        {"second bracket", "[SETTINGS]]\r\nA=1\r\n", "A", "dflt"},
        {"bracket in a note", "[SETTINGS] ; see [x]\r\nA=1\r\n", "A", "dflt"},
        {"the real one later", "[SETTINGS]]\r\nA=1\r\n[SETTINGS]\r\nA=2\r\n", "A", "2"},
        {"blanks inside the brackets", "[ SETTINGS ]\r\nA=1\r\n", "A", "1"},
        {"no closing bracket", "[SETTINGS\r\nA=1\r\n", "A", "dflt"},
        // A UTF-8 byte-order mark before the first header.
        {"utf-8 mark", "\xEF\xBB\xBF[SETTINGS]\r\nA=Se\xC3\xB1" "al\r\n", "A", "Se\xC3\xB1" "al"},
        // UTF-16 with its mark, as Windows' editors write it.
        {"utf-16le", "\xFF\xFE" + utf16le("[SETTINGS]\r\nA=Conecci\xC3\xB3n\r\n"), "A", "Conecci\xC3\xB3n"},
        {"utf-16be", "\xFE\xFF" + utf16be("[SETTINGS]\nA= x \n"), "A", "x"},
        // Form feed, vertical tab and Ctrl-Z are blanks.
        {"form feed before a key", "[SETTINGS]\r\n\fA=1\r\n", "A", "1"},
        {"vertical tab and ctrl-z", "[SETTINGS]\r\nA\v=\v1\x1A\r\n", "A", "1"},
        {"around the header", "\x1A[SETTINGS]\f\r\nA=1\r\n", "A", "1"},
        {"inside a value", "[SETTINGS]\r\nA=1\f2\r\n", "A", "1\f2"},
        // A bare key hides a later value.
        {"bare key first", "[SETTINGS]\r\nA\r\nA=1\r\n", "A", "dflt"},
        {"bare key in blanks and lower case", "[SETTINGS]\r\n  a  \r\nA=1\r\n", "A", "dflt"},
        {"empty value is a value", "[SETTINGS]\r\nA=\r\nA=1\r\n", "A", ""},
        // The buffer counts the code page's bytes: an accented letter is one.
        {"1252 accents cut at 255", "[SETTINGS]\r\nA=" + std::string(300, '\xF3') + "\r\n", "A",
         [] {
             std::string s;
             for (int i = 0; i < 255; ++i) s += "\xC3\xB3";
             return s;
         }()},
        {"1252 in a 250 buffer", "[SETTINGS]\r\nA=" + cp1252("Se\xC3\xB1" "al ") + std::string(260, 'x') + "\r\n", "A",
         "Se\xC3\xB1" "al " + std::string(243, 'x'), 250},
        {"quoted and one short of the buffer", "[SETTINGS]\r\nA=\"" + std::string(255, 'q') + "\"\r\n", "A",
         std::string(254, 'q')},
        {"quoted and cut", "[SETTINGS]\r\nA=\"" + std::string(300, 'q') + "\"\r\n", "A", std::string(255, 'q')},
        // The rest of the classic rules.
        {"case of keys", "[settings]\r\ncheck1 = 1\r\n", "CHECK1", "1"},
        {"quotes come off once", "[SETTINGS]\r\nA=\"\"twice\"\"\r\n", "A", "\"twice\""},
        {"a lone CR ends a line", "[SETTINGS]\rA=1\rB=2\r", "B", "2"},
        {"a NUL ends a value", "[SETTINGS]\r\nA=ab\0cd\r\n"s, "A", "ab"},
        {"keys before any header", "A=1\r\n[SETTINGS]\r\n", "A", "dflt"},
    };
    return cases;
}

TEST(SettingsText, ReadsWhatWindowsReads) {
    for (const Case& c : windowsCases()) {
        EXPECT_EQ(valueOf(c.file, c.key, c.buffer), c.windowsReads) << c.what;
        // The reference reader agrees, so the table is Windows' and not ours.
        EXPECT_EQ(WindowsProfile(c.file).get("SETTINGS", c.key, "dflt", c.buffer), c.windowsReads) << c.what;
    }
}

TEST(SettingsText, AfterASaveBothRulesReadWhatWasSaved) {
    const std::vector<std::pair<std::string, std::string>> saved = {
        {"A", " spaced \"out\" "}, {"B", "\"quoted\""}, {"NEWKEY", "\fedge"}, {"C", "Se\xC3\xB1" "al"}};
    for (const Case& c : windowsCases()) {
        SettingsText text(c.file);
        const bool accents = text.encoding() != TextEncoding::Utf8;
        for (const auto& [key, value] : saved) {
            if (!accents && key == "C") continue;  // a plain file is UTF-8, which Windows reads as its code page
            const SettingsText::SetResult r = text.set("SETTINGS", key, value);
            EXPECT_FALSE(r.charactersReplaced) << c.what;
        }
        const std::string bytes = text.bytes();
        const SettingsText again(bytes);
        EXPECT_EQ(again.encoding(), text.encoding()) << c.what;
        for (const auto& [key, value] : saved) {
            if (!accents && key == "C") continue;
            EXPECT_EQ(again.value("SETTINGS", key, "dflt", 256), value) << c.what << " " << key;
            EXPECT_EQ(WindowsProfile(bytes).get("SETTINGS", key, "dflt"), value) << c.what << " " << key;
        }
    }
}

TEST(SettingsText, EditsTouchOnlyTheirOwnLinesAndKeepTheLineEnds) {
    // LF stays LF; the duplicate section, the note, the odd header and the
    // unknown key stay byte for byte; a new key goes after the last one.
    const std::string lf = "; hand notes\n[SETTINGS]\nA=1\nUNKNOWN = stays\n\n[SETTINGS]]\nA=9\n[settings]\nA=8\n";
    SettingsText text(lf);
    text.set("SETTINGS", "a", "2");
    text.set("SETTINGS", "NEW", "n");
    EXPECT_EQ(text.bytes(), "; hand notes\n[SETTINGS]\nA=2\nUNKNOWN = stays\nNEW=n\n\n[SETTINGS]]\nA=9\n[settings]\nA=8\n");

    // A bare key gets its value where it stands; a file without its last
    // line end gets one before a new line; a file with no section gets one.
    SettingsText bare("[SETTINGS]\r\nA\r\nB=1");
    bare.set("SETTINGS", "A", "x");
    bare.set("SETTINGS", "C", "y");
    EXPECT_EQ(bare.bytes(), "[SETTINGS]\r\nA=x\r\nB=1\r\nC=y\r\n");
    SettingsText other("[OTHER]\rK=v");
    other.set("SETTINGS", "A", "1");
    EXPECT_EQ(other.bytes(), "[OTHER]\rK=v\r[SETTINGS]\rA=1\r");

    // A new file is UTF-8 behind its mark, in CR LF.
    SettingsText fresh;
    fresh.set("SETTINGS", "K", "Se\xC3\xB1" "al");
    EXPECT_EQ(fresh.bytes(), "\xEF\xBB\xBF[SETTINGS]\r\nK=Se\xC3\xB1" "al\r\n");
    EXPECT_EQ(WindowsProfile(fresh.bytes()).get("SETTINGS", "K", ""), "Se\xC3\xB1" "al");
}

TEST(SettingsText, EncodingsAreFoundAndKept) {
    const std::string conexion = "Conecci\xC3\xB3n";
    const std::string senal = "Se\xC3\xB1" "al";
    struct Row {
        std::string file;
        TextEncoding encoding;
    };
    const std::vector<Row> rows = {
        {cp1252("[SETTINGS]\r\nA=" + conexion + "\r\n"), TextEncoding::Windows1252},
        {"[SETTINGS]\r\nA=" + conexion + "\r\n", TextEncoding::Utf8},
        {"\xEF\xBB\xBF[SETTINGS]\r\nA=" + conexion + "\r\n", TextEncoding::Utf8Bom},
        {"\xFF\xFE" + utf16le("[SETTINGS]\r\nA=" + conexion + "\r\n"), TextEncoding::Utf16Le},
        {"\xFE\xFF" + utf16be("[SETTINGS]\r\nA=" + conexion + "\r\n"), TextEncoding::Utf16Be},
    };
    for (const Row& row : rows) {
        SettingsText text(row.file);
        const char* name = encodingName(row.encoding);
        EXPECT_EQ(text.encoding(), row.encoding) << name;
        EXPECT_EQ(text.value("SETTINGS", "A", "", 256), conexion) << name;
        text.set("SETTINGS", "B", senal);
        const std::string bytes = text.bytes();
        // What was there is still there, byte for byte, and the new line is
        // in the file's own encoding.
        EXPECT_EQ(bytes.substr(0, row.file.size()), row.file) << name;
        const SettingsText again(bytes);
        EXPECT_EQ(again.encoding(), row.encoding) << name;
        EXPECT_EQ(again.value("SETTINGS", "B", "", 256), senal) << name;
    }
    EXPECT_EQ(SettingsText(rows[0].file).bytes(), rows[0].file);
    SettingsText windows(rows[0].file);
    windows.set("SETTINGS", "B", senal);
    EXPECT_EQ(windows.bytes(), cp1252("[SETTINGS]\r\nA=" + conexion + "\r\nB=" + senal + "\r\n"));

    // A UTF-8 file counts characters, and never cuts one in two.
    std::string longUtf8;
    for (int i = 0; i < 300; ++i) longUtf8 += "\xC3\xB3";
    EXPECT_EQ(valueOf("[SETTINGS]\nA=" + longUtf8 + "\n", "A").size(), 255u * 2);
    EXPECT_EQ(valueOf("[SETTINGS]\nA=" + std::string(254, 'a') + "\xE2\x82\xAC" + "b\n", "A"),
              std::string(254, 'a') + "\xE2\x82\xAC");

    // The five bytes Windows-1252 leaves unassigned survive a save.
    const std::string odd = "[SETTINGS]\r\nA=\x81\x8D\x8F\x90\x9D\r\n";
    SettingsText unassigned(odd);
    unassigned.set("SETTINGS", "A", unassigned.value("SETTINGS", "A", "", 256));
    EXPECT_EQ(unassigned.bytes(), odd);

    // What Windows-1252 cannot hold becomes '?', and the edit says so.
    SettingsText narrow(rows[0].file);
    EXPECT_TRUE(narrow.set("SETTINGS", "A", "\xE2\x86\x92 " + senal).charactersReplaced);
    EXPECT_EQ(narrow.value("SETTINGS", "A", "", 256), "? " + senal);
    EXPECT_FALSE(narrow.set("SETTINGS", "A", "\xE2\x82\xAC 5").charactersReplaced) << "the euro sign is in it";
}

TEST(SettingsText, AValueCannotInjectALine) {
    SettingsText text;
    const SettingsText::SetResult r = text.set("SETTINGS", "TEXT", "one\r\n[EVIL]\nX=1\rY");
    EXPECT_TRUE(r.lineBreaksReplaced);
    EXPECT_EQ(text.value("SETTINGS", "TEXT", "", 256), "one [EVIL] X=1 Y");
    EXPECT_EQ(text.value("EVIL", "X", "none", 256), "none");
    EXPECT_FALSE(text.set("SETTINGS", "TEXT", "plain").lineBreaksReplaced);
}

// Files built from the pieces hand-edited and copied files are made of, read
// by the store and by the reference reader, then edited and read again.
class GeneratedFile {
public:
    explicit GeneratedFile(std::mt19937& random) : m_random(random) {}

    std::string make(TextEncoding encoding) {
        std::string text;
        const int lines = pick(1, 14);
        for (int i = 0; i < lines; ++i) text += line() + lineEnd(i + 1 == lines);
        switch (encoding) {
            case TextEncoding::Utf8Bom: return "\xEF\xBB\xBF" + text;
            case TextEncoding::Utf16Le: return "\xFF\xFE" + utf16le(text);
            case TextEncoding::Utf16Be: return "\xFE\xFF" + utf16be(text);
            default: return cp1252(text);
        }
    }

    int pick(int low, int high) { return std::uniform_int_distribution<int>(low, high)(m_random); }
    template <class T>
    const T& oneOf(const std::vector<T>& items) {
        return items[static_cast<size_t>(pick(0, static_cast<int>(items.size()) - 1))];
    }

    std::string blanks() {
        static const std::vector<std::string> b = {"", "", "", " ", "\t", "\f", "\v", "\x1A", "  \t"};
        return oneOf(b);
    }

    std::string value() {
        static const std::vector<std::string> v = {
            "1", "True", "", "a = b", "\"quoted\"", "'single'", "\"open", "C:\\Program Files\\Marrowvane\\",
            "Se\xC3\xB1" "al", "Conecci\xC3\xB3n", "x\fy", std::string(250, 'w'), std::string(300, 'z'),
            "\"" + std::string(255, 'q') + "\""};
        return oneOf(v);
    }

private:
    std::string line() {
        static const std::vector<std::string> headers = {"[SETTINGS]", "[settings]", "[ Settings ]", "[SETTINGS]]",
                                                         "[SETTINGS] ; x [y]", "[OTHER]", "[]", "[SETTINGS"};
        static const std::vector<std::string> keys = {"A", "a", "B", "C", ";A", "b"};
        switch (pick(0, 5)) {
            case 0: return blanks() + oneOf(headers) + blanks();
            case 1: return blanks() + oneOf(keys) + blanks();  // no '='
            case 2: return blanks();
            default: return blanks() + oneOf(keys) + blanks() + "=" + blanks() + value() + blanks();
        }
    }

    std::string lineEnd(bool last) {
        static const std::vector<std::string> ends = {"\r\n", "\r\n", "\n", "\r", "\r\n\r\n"};
        return last && pick(0, 2) == 0 ? "" : oneOf(ends);
    }

    std::mt19937& m_random;
};

TEST(SettingsText, GeneratedFilesReadTheSameAsWindowsBeforeAndAfterAnEdit) {
    std::mt19937 random(20261122);
    GeneratedFile gen(random);
    const std::vector<TextEncoding> encodings = {TextEncoding::Windows1252, TextEncoding::Utf8Bom,
                                                 TextEncoding::Utf16Le, TextEncoding::Utf16Be};
    const std::vector<std::string> keys = {"A", "B", "C", "MISSING"};
    const std::vector<size_t> buffers = {256, 250, 265, 4, 1};
    for (int n = 0; n < 600; ++n) {
        const std::string file = gen.make(encodings[static_cast<size_t>(n) % encodings.size()]);
        SettingsText text(file);
        const WindowsProfile windows(file);
        for (const std::string& key : keys)
            for (size_t buffer : buffers)
                ASSERT_EQ(text.value("SETTINGS", key, "dflt", buffer), windows.get("SETTINGS", key, "dflt", buffer))
                    << "file " << n << " key " << key << " buffer " << buffer << ":\n" << file;
        EXPECT_EQ(text.bytes(), file) << "file " << n;

        // An edit of one key changes one stretch of the file: a line
        // rewritten in place, or lines added.
        const std::string& key = gen.oneOf(keys);
        std::string value = gen.value();
        if (text.encoding() == TextEncoding::Utf8 && value.find('\xC3') != std::string::npos) value = "plain";
        text.set("SETTINGS", key, value);
        const std::string edited = text.bytes();
        size_t head = 0;
        while (head < file.size() && head < edited.size() && file[head] == edited[head]) ++head;
        size_t tail = 0;
        while (tail < file.size() - head && tail < edited.size() - head &&
               file[file.size() - 1 - tail] == edited[edited.size() - 1 - tail])
            ++tail;
        const std::string replaced = file.substr(head, file.size() - head - tail);
        if (text.encoding() != TextEncoding::Utf16Le && text.encoding() != TextEncoding::Utf16Be) {
            EXPECT_EQ(replaced.find_first_of("\r\n"), std::string::npos) << "file " << n << " lost a line:\n" << file;
        }

        const WindowsProfile after(edited);
        const SettingsText again(edited);
        for (const std::string& k : keys)
            ASSERT_EQ(again.value("SETTINGS", k, "dflt", 1024), after.get("SETTINGS", k, "dflt", 1024))
                << "file " << n << " after setting " << key << ":\n" << edited;
        EXPECT_EQ(again.value("SETTINGS", key, "dflt", 1024), value) << "file " << n;
    }
}

}  // namespace
}  // namespace mv
