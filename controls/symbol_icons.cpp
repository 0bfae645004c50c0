#include "controls/symbol_icons.h"

#include <QFileInfo>
#include <QIconEngine>
#include <QIconEnginePlugin>
#include <QPainter>
#include <QtPlugin>
#include <algorithm>

#include "controls/symbol_paths.h"

namespace melvane {

namespace {

constexpr qreal kStroke = 2.3;  // on the grid of the symbols

constexpr std::pair<const char*, Symbol> kNames[] = {
    {"tick", Symbol::tick}, {"dot", Symbol::dot}, {"down", Symbol::down}, {"right", Symbol::right}};

class SymbolIcon : public QIconEngine {
public:
    SymbolIcon(Symbol symbol, const QColor& colour) : symbol_(symbol), colour_(colour) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode, QIcon::State) override {
        const qreal side = std::min(rect.width(), rect.height());
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->translate(QRectF(rect).center() - QPointF(side, side) / 2);
        painter->scale(side / kSymbolGrid, side / kSymbolGrid);
        painter->setPen(QPen(colour_, kStroke, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter->drawPath(symbolPath(symbol_));
        painter->restore();
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap drawn(size);
        drawn.fill(Qt::transparent);
        QPainter painter(&drawn);
        paint(&painter, drawn.rect(), mode, state);
        return drawn;
    }
    QIconEngine* clone() const override { return new SymbolIcon(*this); }

private:
    Symbol symbol_;
    QColor colour_;
};

}  // namespace

// Chosen by the suffix of what is asked for.
class SymbolIcons : public QIconEnginePlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QIconEngineFactoryInterface_iid FILE "symbol_icons.json")

public:
    QIconEngine* create(const QString& file) override {
        const QStringList parts = QFileInfo(file).completeBaseName().split(u'#');
        const auto* found = std::find_if(std::begin(kNames), std::end(kNames),
                                         [&](const auto& row) { return parts.first() == QLatin1String(row.first); });
        if (found == std::end(kNames) || parts.size() != 2) return nullptr;
        return new SymbolIcon(found->second, QColor(u'#' + parts.last()));
    }
};

}  // namespace melvane

#include "symbol_icons.moc"

// In no namespace: the macro declares what it calls.
Q_IMPORT_PLUGIN(SymbolIcons)

// That it is called brings the plugin into the program.
void initSymbolIcons() {}
