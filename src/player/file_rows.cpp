#include "player/file_rows.h"

#include <string>

namespace mv {

const char* FileRows::fileKey(int row) {
    static constexpr const char* keys[kCount] = {"TEXT59", "TEXT57", "TEXT55", "TEXT53", "TEXT51", "TEXT49", "TEXT47",
                                                 "TEXT45", "TEXT21", "TEXT22", "TEXT23", "TEXT24", "TEXT25", "TEXT26",
                                                 "TEXT27", "TEXT28", "TEXT29", "TEXT30", "TEXT31", "TEXT32"};
    return keys[row - 1];
}

const char* FileRows::selectFileMessage(int row) {
    return row == 9 ? "Por Favor, Seleccione un Archivo, Gracias" : "Por Favor, Seleccione un archivo, Gracias";
}

void FileRows::build(WindowParts parts, Container& area, Actions actions) {
    auto& frame = area.add(parts.make<Container>("frameFiles", ContainerKind::Frame, "Archivos Seleccionados"));
    auto& grid = frame.add(parts.make<Container>("fileRows", ContainerKind::Grid, "", 5));
    OptionGroup& marks = parts.makeGroup();
    for (int row = 1; row <= kCount; ++row) {
        const std::string n = std::to_string(row);
        grid.add(parts.make<Label>("RowNumber" + n, n));
        m_marks[row - 1] = &grid.add(parts.make<OptionButton>("Option" + n, "", marks));
        m_files[row - 1] = &grid.add(parts.make<TextBox>(fileKey(row), ""));
        Button& browse = grid.add(parts.make<Button>("Browse" + n, "Buscar"));
        browse.onClick = [onBrowse = actions.browse, row] { onBrowse(row); };
        // The play button has a symbol, not a word, as the original had a picture.
        Button& play = grid.add(parts.make<Button>("PlayRow" + n, "\xE2\x96\xB6"));
        play.setToolTip("Transmitir el archivo " + n);
        play.onClick = [onPlay = actions.play, row] { onPlay(row); };
    }
}

}  // namespace mv
