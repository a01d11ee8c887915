// Registry texts of any bytes: an error or operations; and whatever they make in a hive survives its export,
// or the export is refused.

#include "support/hive_sink.h"

#include <cstdint>
#include <cstdlib>

using namespace quoril;
using test::HiveSink;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto operations = regtext::parse(QByteArray(reinterpret_cast<const char*>(data), qsizetype(size)));
    if (!operations)
        return 0;
    regf::Hive hive = regf::Hive::create(QStringLiteral("R"));
    HiveSink sink(hive.root());
    (void)regtext::apply(*operations, sink);
    const Result<QByteArray> text = regtext::write(hive.root(), QStringLiteral("R"));
    if (!text)
        return 0;
    const auto again = regtext::parse(*text);
    if (!again)
        std::abort();
    regf::Hive copy = regf::Hive::create(QStringLiteral("x"));
    HiveSink copySink(copy.root());
    if (!regtext::apply(*again, copySink))
        std::abort();
    const regf::Key* root = copy.root().child(u"R");
    const Result<QByteArray> second
        = root ? regtext::write(*root, QStringLiteral("R")) : Result<QByteArray>(QByteArray());
    if (!second || *second != *text)
        std::abort();
    return 0;
}
