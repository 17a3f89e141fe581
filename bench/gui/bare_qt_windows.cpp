// What Qt alone costs for the desktop's windows: shows one plain top-level
// window per size given ("1253x852 867x879"), empty, or with --controls full
// of the kinds of control the suite's windows hold (one per 150 x 30 pixels
// in a tab page, and the console's text, list and tree views). Links
// nothing but Qt Widgets, so bench/idle_cost.sh can set the desktop suite's
// resident memory beside the part any Qt program with the same windows has.
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QSlider>
#include <QSpinBox>
#include <QTabWidget>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <QWidget>
#include <iostream>
#include <memory>
#include <vector>

namespace {

void fillWithControls(QWidget& window, QSize size) {
    // In a tab page's framed group, like the hub's pages; a row of the
    // console's record views at the foot.
    auto* outer = new QVBoxLayout(&window);
    auto* tabs = new QTabWidget;
    outer->addWidget(tabs, 1);
    auto* group = new QGroupBox(QStringLiteral("Controls"));
    tabs->addTab(group, QStringLiteral("Page"));
    auto* grid = new QGridLayout(group);
    const int rows = std::max(1, (size.height() - 200) / 30);
    const int columns = std::max(1, size.width() / 150);
    for (int r = 0; r < rows; ++r) {
        for (int c = 0; c < columns; ++c) {
            const QString text = QStringLiteral("Control %1.%2").arg(r).arg(c);
            QWidget* control = nullptr;
            switch ((r * columns + c) % 8) {
                case 0: control = new QLabel(text); break;
                case 1: control = new QPushButton(text); break;
                case 2: control = new QCheckBox(text); break;
                case 3: control = new QRadioButton(text); break;
                case 4: control = new QLineEdit(text); break;
                case 5: {
                    auto* combo = new QComboBox;
                    combo->addItems({text, QStringLiteral("Other")});
                    control = combo;
                    break;
                }
                case 6: control = new QSpinBox; break;
                default: control = new QSlider(Qt::Horizontal); break;
            }
            grid->addWidget(control, r, c);
        }
    }
    auto* views = new QHBoxLayout;
    auto* text = new QPlainTextEdit(QStringLiteral("14:00:00  SetPTT(true)\n14:00:03  SetPTT(false)"));
    auto* list = new QListWidget;
    list->addItems({QStringLiteral("EA4ABC"), QStringLiteral("EA4XYZ")});
    auto* tree = new QTreeWidget;
    tree->setHeaderLabels({QStringLiteral("Station"), QStringLiteral("Since")});
    views->addWidget(text);
    views->addWidget(list);
    views->addWidget(tree);
    outer->addLayout(views);
}

}  // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    std::vector<QSize> sizes;
    bool controls = false;
    const QRegularExpression sizeForm(QStringLiteral("^(\\d+)x(\\d+)$"));
    for (const QString& arg : QCoreApplication::arguments().mid(1)) {
        if (arg == QLatin1String("--controls")) {
            controls = true;
            continue;
        }
        const QRegularExpressionMatch m = sizeForm.match(arg);
        if (!m.hasMatch()) {
            std::cerr << "usage: bare_qt_windows WIDTHxHEIGHT... [--controls]\n";
            return 2;
        }
        sizes.emplace_back(m.captured(1).toInt(), m.captured(2).toInt());
    }
    std::vector<std::unique_ptr<QWidget>> windows;
    for (const QSize& size : sizes) {
        auto window = std::make_unique<QWidget>();
        if (controls) fillWithControls(*window, size);
        window->resize(size);
        window->show();
        windows.push_back(std::move(window));
    }
    return app.exec();
}
