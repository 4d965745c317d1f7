#include "Classes/Delegate/TransitionBGView.h"
#include "platform/ui/Nib.h"
#include "tests/support/TestCase.h"

#include <QApplication>
#include <QImage>
#include <QLabel>
#include <cmath>

class tst_TransitionBGView : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void gradientRunsFromWhiteAtTheTopToGrayAtTheBottom();
    void isHalfTransparent();
    void outlineIsRoundedAndGray();
    void drawsItsWholeBoundsWhateverIsRedrawn();
    void smallViewsStillDraw_data();
    void smallViewsStillDraw();
    void textsOnItStayReadable_data();
    void textsOnItStayReadable();
    void textsFollowAChangeOfTheWindowsColors();
    void interfaceFileMayPlaceIt();

private:
    static QImage painted(const QSize &size, const QColor &behind);
    static double contrast(const QColor &a, const QColor &b);
};

QImage tst_TransitionBGView::painted(const QSize &size, const QColor &behind)
{
    TransitionBGView view;
    view.resize(size);
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(behind);
    view.render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
    return image;
}

double tst_TransitionBGView::contrast(const QColor &a, const QColor &b)
{
    const auto luminance = [](const QColor &color) {
        const auto linear = [](int part) { return std::pow(part / 255.0, 2.2); };
        return 0.2126 * linear(color.red()) + 0.7152 * linear(color.green()) + 0.0722 * linear(color.blue());
    };
    const double first = luminance(a) + 0.05;
    const double second = luminance(b) + 0.05;
    return std::max(first, second) / std::min(first, second);
}

void tst_TransitionBGView::gradientRunsFromWhiteAtTheTopToGrayAtTheBottom()
{
    const QImage image = painted({40, 200}, Qt::black);
    int before = 255;
    for (int y = 1; y < 199; ++y) {
        const QColor color = image.pixelColor(20, y);
        // From half of white to half of 0.8, straight.
        const double expected = 255 * 0.5 * (1 - 0.2 * (y + 0.5) / 200);
        QVERIFY2(std::abs(color.red() - expected) < 2, qPrintable(color.name()));
        QVERIFY(color.red() == color.green() && color.green() == color.blue());
        QVERIFY(color.red() <= before);
        before = color.red();
        QCOMPARE(image.pixelColor(3, y == 1 ? 4 : y).red(), image.pixelColor(36, y == 1 ? 4 : y).red());
    }
    QVERIFY(image.pixelColor(20, 1).red() > 125);
    QVERIFY(image.pixelColor(20, 198).red() < 105);
}

void tst_TransitionBGView::isHalfTransparent()
{
    QCOMPARE(painted({40, 40}, Qt::transparent).pixelColor(20, 20).alpha(), 128);
    const QColor onBlue = painted({40, 200}, QColor(0, 0, 200)).pixelColor(20, 1);
    QVERIFY(std::abs(onBlue.red() - 127) <= 2 && std::abs(onBlue.blue() - 227) <= 2);
}

void tst_TransitionBGView::outlineIsRoundedAndGray()
{
    const QImage image = painted({40, 30}, Qt::white);
    const QColor gray(128, 128, 128);
    for (const QPoint edge : {QPoint(20, 0), QPoint(20, 29), QPoint(0, 15), QPoint(39, 15)})
        QCOMPARE(image.pixelColor(edge), gray);
    // The gradient fills the bounds to their very corners, the line goes round them.
    QVERIFY(image.pixelColor(0, 29).red() > 215 && image.pixelColor(0, 29).red() < 240);
    QVERIFY(image.pixelColor(1, 1).red() < 220);
    QVERIFY(image.pixelColor(5, 5).red() > 240);
}

void tst_TransitionBGView::drawsItsWholeBoundsWhateverIsRedrawn()
{
    const QImage whole = painted({40, 60}, Qt::transparent);
    TransitionBGView view;
    view.resize(40, 60);
    QImage image(40, 60, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    for (const QRect part : {QRect(0, 0, 40, 13), QRect(0, 13, 7, 47), QRect(7, 13, 33, 47)})
        view.render(&image, part.topLeft(), part, QWidget::RenderFlags());
    QCOMPARE(image, whole);
}

void tst_TransitionBGView::smallViewsStillDraw_data()
{
    QTest::addColumn<QSize>("size");
    for (const int width : {1, 2, 7, 40}) {
        for (const int height : {1, 3, 7})
            QTest::addRow("%d x %d", width, height) << QSize(width, height);
    }
}

void tst_TransitionBGView::smallViewsStillDraw()
{
    QFETCH(QSize, size);
    const QImage image = painted(size, Qt::transparent);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            QVERIFY(image.pixelColor(x, y).alpha() >= 127);
    }
    QVERIFY(image.pixelColor(size.width() / 2, 0).alpha() > 150); // the outline
}

void tst_TransitionBGView::textsOnItStayReadable_data()
{
    QTest::addColumn<QColor>("window");
    QTest::addColumn<QColor>("text");
    QTest::addColumn<bool>("isKept");
    QTest::newRow("light") << QColor(239, 239, 239) << QColor(Qt::black) << true;
    QTest::newRow("light with colour") << QColor(250, 245, 230) << QColor(60, 20, 0) << true;
    QTest::newRow("dark") << QColor(53, 53, 53) << QColor(Qt::white) << false;
    QTest::newRow("darkest") << QColor(Qt::black) << QColor(255, 255, 0) << false;
    QTest::newRow("dark grey") << QColor(30, 30, 46) << QColor(205, 214, 244) << false;
}

void tst_TransitionBGView::textsOnItStayReadable()
{
    QFETCH(QColor, window);
    QFETCH(QColor, text);
    QFETCH(bool, isKept);
    QPalette palette;
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::WindowText, text);
    QWidget parent;
    parent.setPalette(palette);
    auto *view = new TransitionBGView(&parent);
    const QLabel label(QStringLiteral("Text"), view);
    view->resize(40, 200);
    const QColor shown = label.palette().color(QPalette::WindowText);
    QCOMPARE(shown == text, isKept);
    QImage image(40, 200, QImage::Format_RGB32);
    image.fill(window);
    view->render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
    for (const int y : {2, 100, 197}) {
        const double ratio = contrast(shown, image.pixelColor(30, y));
        // On the gradient over black neither black nor white gets further than this at both of its ends.
        QVERIFY2(ratio > (window == Qt::black ? 3.9 : 4.2), qPrintable(QString::number(ratio)));
    }
}

void tst_TransitionBGView::textsFollowAChangeOfTheWindowsColors()
{
    QPalette dark;
    dark.setColor(QPalette::Window, QColor(53, 53, 53));
    dark.setColor(QPalette::WindowText, Qt::white);
    QPalette light;
    light.setColor(QPalette::Window, QColor(240, 240, 240));
    light.setColor(QPalette::WindowText, QColor(10, 20, 30));
    QWidget parent;
    parent.setPalette(light);
    auto *view = new TransitionBGView;
    const QLabel label(QStringLiteral("Text"), view);
    view->setParent(&parent);
    const auto shown = [&label] { return label.palette().color(QPalette::WindowText); };
    QCOMPARE(shown(), QColor(10, 20, 30));
    parent.setPalette(dark);
    QCOMPARE(shown(), QColor(Qt::black));
    parent.setPalette(light);
    QCOMPARE(shown(), QColor(10, 20, 30));
}

void tst_TransitionBGView::interfaceFileMayPlaceIt()
{
    Nib::registerClass<TransitionBGView>();
    Nib nib(R"(<ui version="4.0"><widget class="TransitionBGView" name="panel"/></ui>)");
    const std::unique_ptr<QWidget> widget(nib.instantiate());
    QVERIFY(qobject_cast<TransitionBGView *>(widget.get()));
}

LINKLIST_GUI_TEST_MAIN(tst_TransitionBGView)
#include "tst_TransitionBGView.moc"
