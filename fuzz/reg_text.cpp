// Registry texts of any bytes: an error or operations; and whatever they make in a hive survives its export.

#include "formats/reg_text.h"
#include "formats/regf_hive.h"

#include <cstdint>
#include <cstdlib>

using namespace quoril;

namespace {

class HiveSink : public regtext::Sink
{
public:
    explicit HiveSink(regf::Key& root) : m_root(root) { }

    Status createKey(QStringView path) override
    {
        const Result<regf::Key*> key = m_root.addPath(path, 1);
        return key ? Status() : Status(key.failure());
    }
    Status deleteKey(QStringView path) override
    {
        const qsizetype last = path.lastIndexOf(u'\\');
        if (regf::Key* parent = m_root.find(path.first(std::max<qsizetype>(last, 0))))
            parent->removeChild(path.sliced(last + 1), 1);
        return {};
    }
    Status setValue(QStringView path, QStringView name, quint32 type, const QByteArray& data) override
    {
        return m_root.find(path)->setValue(name, type, data, 1);
    }
    Status deleteValue(QStringView path, QStringView name) override
    {
        m_root.find(path)->removeValue(name, 1);
        return {};
    }

private:
    regf::Key& m_root;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto operations = regtext::parse(QByteArray(reinterpret_cast<const char*>(data), qsizetype(size)));
    if (!operations)
        return 0;
    regf::Hive hive = regf::Hive::create(QStringLiteral("R"));
    HiveSink sink(hive.root());
    (void)regtext::apply(*operations, sink);
    const QByteArray text = regtext::write(hive.root(), QStringLiteral("R"));
    const auto again = regtext::parse(text);
    if (!again)
        std::abort();
    regf::Hive copy = regf::Hive::create(QStringLiteral("x"));
    HiveSink copySink(copy.root());
    if (!regtext::apply(*again, copySink))
        std::abort();
    const regf::Key* root = copy.root().child(u"R");
    if (!root || regtext::write(*root, QStringLiteral("R")) != text)
        std::abort();
    return 0;
}
