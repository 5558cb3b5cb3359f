#include "gui/QtServices.h"

#include <QClipboard>
#include <QCoreApplication>
#include <QCursor>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QMimeData>
#include <QUrl>

namespace km::gui {

bool QtClipboard::hasText() const {
    const QMimeData *data = QGuiApplication::clipboard()->mimeData();
    return data && data->hasText() && !data->text().isEmpty();
}

QString QtClipboard::text() const {
    return QGuiApplication::clipboard()->text();
}

void QtClipboard::setText(const QString &text, bool secret) {
    auto *data = new QMimeData;
    data->setText(text);
    if (secret) data->setData(QStringLiteral("x-kde-passwordManagerHint"), QByteArrayLiteral("secret"));
    QGuiApplication::clipboard()->setMimeData(data);
}

void QtClipboard::clear() {
    QGuiApplication::clipboard()->clear();
}

void QtDesktop::setWaitCursor(bool on) {
    // The calls pair up like the override cursor's own stack; an extra
    // "off" does not pop a cursor someone else set.
    if (on) {
        QGuiApplication::setOverrideCursor(Qt::WaitCursor);
        ++m_waitDepth;
    } else if (m_waitDepth > 0) {
        QGuiApplication::restoreOverrideCursor();
        --m_waitDepth;
    }
}

bool QtDesktop::openUrl(const QString &url) {
    return QDesktopServices::openUrl(QUrl(url));
}

void QtDesktop::processEvents() {
    QCoreApplication::processEvents();
}

} // namespace km::gui
