#include "Classes/Delegate/RoundView.h"
#include "platform/ui/Nib.h"
#include "tests/support/TestCase.h"

#include <QApplication>
#include <QImage>

class tst_RoundView : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void drawsARoundedGrayOutlineAndNoFill();
    void drawsItsWholeBoundsWhateverIsRedrawn();
    void smallViewsStillDraw_data();
    void smallViewsStillDraw();
    void lineIsOnePointAtEveryScale();
    void interfaceFileMayPlaceIt();

private:
    static QImage painted(const QSize &size, double scale = 1);
};

QImage tst_RoundView::painted(const QSize &size, double scale)
{
    RoundView view;
    view.resize(size);
    QImage image(size * scale, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(scale);
    image.fill(Qt::transparent);
    view.render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
    return image;
}

void tst_RoundView::drawsARoundedGrayOutlineAndNoFill()
{
    const QImage image = painted({40, 30});
    const QColor gray(128, 128, 128);
    for (const QPoint edge : {QPoint(20, 0), QPoint(20, 29), QPoint(0, 15), QPoint(39, 15)})
        QCOMPARE(image.pixelColor(edge), gray);
    for (int y = 4; y < 26; ++y) {
        for (int x = 4; x < 36; ++x)
            QCOMPARE(image.pixelColor(x, y).alpha(), 0);
    }
    QCOMPARE(image.pixelColor(20, 1).alpha(), 0);
    // Corners of 4 points: the outermost pixel is free, the line passes through (1, 1).
    for (const QPoint corner : {QPoint(0, 0), QPoint(39, 0), QPoint(0, 29), QPoint(39, 29)})
        QVERIFY(image.pixelColor(corner).alpha() < 10);
    QVERIFY(image.pixelColor(1, 1).alpha() > 100);
    QCOMPARE(image.pixelColor(4, 0), gray);
}

void tst_RoundView::drawsItsWholeBoundsWhateverIsRedrawn()
{
    const QImage whole = painted({40, 30});
    RoundView view;
    view.resize(40, 30);
    QImage image(40, 30, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    for (const QRect part : {QRect(0, 0, 10, 10), QRect(10, 0, 30, 10), QRect(0, 10, 40, 20)})
        view.render(&image, part.topLeft(), part, QWidget::RenderFlags());
    QCOMPARE(image, whole);
}

void tst_RoundView::smallViewsStillDraw_data()
{
    QTest::addColumn<QSize>("size");
    for (const int width : {1, 2, 3, 7, 8, 40}) {
        for (const int height : {1, 2, 5, 7})
            QTest::addRow("%d x %d", width, height) << QSize(width, height);
    }
}

void tst_RoundView::smallViewsStillDraw()
{
    QFETCH(QSize, size);
    const QImage image = painted(size);
    int most = 0;
    const QImage turned = image.mirrored(true, true);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            const int alpha = image.pixelColor(x, y).alpha();
            most = std::max(most, alpha);
            QVERIFY(std::abs(alpha - turned.pixelColor(x, y).alpha()) < 16); // all four corners alike
        }
    }
    QVERIFY(most > 150);
}

void tst_RoundView::lineIsOnePointAtEveryScale()
{
    for (const double scale : {1.0, 2.0}) {
        const QImage image = painted({40, 30}, scale);
        for (int y = 0; y < 4; ++y)
            QCOMPARE(image.pixelColor(image.width() / 2, y).alpha(), y < scale ? 255 : 0);
    }
}

void tst_RoundView::interfaceFileMayPlaceIt()
{
    Nib::registerClass<RoundView>();
    Nib nib(R"(<ui version="4.0"><widget class="RoundView" name="panel"/></ui>)");
    const std::unique_ptr<QWidget> widget(nib.instantiate());
    QVERIFY(qobject_cast<RoundView *>(widget.get()));
}

LINKLIST_GUI_TEST_MAIN(tst_RoundView)
#include "tst_RoundView.moc"
