#include "tests/managers/hosts/HostApp.h"

#include <QApplication>
#include <QCloseEvent>
#include <QPainter>
#include <QSocketNotifier>
#include <QTimer>
#include <QWidget>

// The app in Qt 6.

namespace {

class QtHostWindow : public QWidget, public HostWindow {
public:
    QtHostWindow(WindowWish wish, std::function<void()> destroyClosed)
        : m_wish(std::move(wish))
        , m_destroyClosed(std::move(destroyClosed))
    {
        setWindowTitle(QString::fromStdString(m_wish.title));
        resize(m_wish.width, m_wish.height);
        setAttribute(Qt::WA_OpaquePaintEvent);
    }

    std::uint32_t realize() override
    {
        auto const id = static_cast<std::uint32_t>(winId());
        // Sends what Qt has still in its own hands.
        QApplication::sync();
        return id;
    }
    void show() override
    {
        QWidget::show();
        raise();
        activateWindow();
    }
    void hide() override { QWidget::hide(); }

protected:
    void paintEvent(QPaintEvent*) override { QPainter(this).fillRect(rect(), Qt::blue); }
    void keyPressEvent(QKeyEvent*) override { m_wish.gotKey(); }
    void closeEvent(QCloseEvent* event) override
    {
        event->ignore();
        m_wish.askedToClose();
        QTimer::singleShot(0, m_destroyClosed);
    }

private:
    WindowWish m_wish;
    std::function<void()> m_destroyClosed;
};

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "xcb");
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication application(argc, argv);
    HostApp* running = nullptr;
    HostApp app(argc, argv, [&](WindowWish wish) {
        return std::make_unique<QtHostWindow>(std::move(wish), [&running] { running->destroyClosed(); });
    });
    running = &app;

    QSocketNotifier pluginIsReadable(app.host().pollableDescriptor(), QSocketNotifier::Read);
    QObject::connect(&pluginIsReadable, &QSocketNotifier::activated, [&] { app.host().dispatch(); });
    QSocketNotifier commandsCame(0, QSocketNotifier::Read);
    QObject::connect(&commandsCame, &QSocketNotifier::activated, [&] {
        if (!app.readCommands())
            QApplication::quit();
    });
    app.host().dispatch();
    return QApplication::exec();
}
