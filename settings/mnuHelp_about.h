// What the program says about itself: product, licence, and what it is made of.
#pragma once

#include <QTextBrowser>
#include <string>

namespace melvane {

// A link that is chosen is told by anchorClicked, and not followed.
class AboutText : public QTextBrowser {
    Q_OBJECT

public:
    // `place` is in units of the page.
    AboutText(QWidget* page, const QRect& place);

    // In English for a code other than "pl".
    void useLanguage(const std::string& code);

protected:
    void changeEvent(QEvent* event) override;  // the zoom may have changed

private:
    void layOutText();
};

}  // namespace melvane
