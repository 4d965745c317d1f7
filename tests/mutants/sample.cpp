// Nothing here: if (a < b) return 1;
#include "sample.h"
#define TWICE(x) ((x)*2 + 1)
/* nor here: call(1); "text" */
static_assert(sizeof(int) == 4, "nor here");

namespace
{
constexpr int most = 1'000;
const char *const raw = R"x(a "quoted" // line
    if (b < c) of 2 lines)x";
template <int N = 3>
struct Pair {
    virtual bool holds(QList<int> &&list, int *more) const = 0;
    Q_PROPERTY(int width READ width REVISION 2)
    int width() const { return m_width; }
    Pair() { }
    void use(QList<int> * = nullptr);
    std::map<int, QList<int>> m_lists;
    int m_width = 0x0f;
    double m_part{.5};
};
} // namespace

Pair::Pair(int width)
    : m_width(width)
    , m_part{-1.0f}
{
    QString text(u"a\"b"_s);
    Widget *parent = parentWidget();
    if (width >= 0 && !text.isEmpty()) // "not this" == 'x'
        text = QString(), m_lists.clear();
    else
        QObject::disconnect(parent);
}

QString Pair::name(int index, char sign) const
{
    switch (index - 1) {
    case 2:
        Q_EMIT changed(index);
        break;
    default:
        m_counts[index] += index * 2;
    }
    if (const auto found = m_lists.find(index); found != m_lists.end())
        return sign == '+' ? found->name : QString();
    for (auto &list : m_lists)
        ++list;
    connect(this, &Pair::changed, [this] { update(); });
    const auto isSmall = [](int n) -> bool { return n < 3; };
    return {};
}

bool isOn()
{
    return true;
}
Pair &self()
{
    return instance;
}
