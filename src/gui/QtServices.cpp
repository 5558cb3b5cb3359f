#include "gui/QtServices.h"

#include <QClipboard>
#include <QCoreApplication>
#include <QCursor>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QMimeData>
#include <QUrl>

#include "platform/CodePage1252.h"
#include "store/CRY.h"

namespace km::gui {

bool QtClipboard::hasText() const {
    const QMimeData *data = QGuiApplication::clipboard()->mimeData();
    return data && data->hasText() && !data->text().isEmpty();
}

QString QtClipboard::text() const {
    return QGuiApplication::clipboard()->text();
}

namespace {

QMimeData *mimeOf(const QString &text, bool secret) {
    auto *data = new QMimeData;
    data->setText(text);
    if (secret) data->setData(QStringLiteral("x-kde-passwordManagerHint"), QByteArrayLiteral("secret"));
    return data;
}

} // namespace

void QtClipboard::setText(const QString &text, bool secret) {
    QGuiApplication::clipboard()->setMimeData(mimeOf(text, secret));
}

void QtClipboard::clear() {
    QGuiApplication::clipboard()->clear();
    clearSelection();
}

void QtClipboard::clearSelection() {
    QClipboard *clipboard = QGuiApplication::clipboard();
    if (!clipboard->supportsSelection() || !clipboard->ownsSelection()) return;
    const auto length = static_cast<int>(clipboard->text(QClipboard::Selection).size());
    if (length > 0)
        clipboard->setMimeData(mimeOf(km::cp1252::fromSecureBytes(CRY::RandomBytes(length)), true),
                               QClipboard::Selection);
    clipboard->clear(QClipboard::Selection);
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
