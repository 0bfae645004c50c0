#include "desktop/toolkit_texts.h"

#include <QCoreApplication>
#include <QLibraryInfo>

namespace melvane {

void ToolkitTexts::use(const std::string& languageCode) {
    QCoreApplication::removeTranslator(&texts_);
    const QString file = QStringLiteral("qtbase_") + QString::fromStdString(languageCode);
    if (texts_.load(file, QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(&texts_);
}

}  // namespace melvane
