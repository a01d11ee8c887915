// Hives of any bytes: all that is read must be bounded, and what can be written must read back the same.

#include "formats/regf_image.h"

#include "formats/regf_hive.h"

#include <QtEndian>

#include <cstdint>
#include <cstdlib>

using namespace quoril;

namespace {

void require(bool condition)
{
    if (!condition)
        std::abort();
}

std::size_t walk(const regf::Key& key)
{
    std::size_t bytes = std::size_t(key.name().size() + key.className().size() + key.security().size());
    for (const regf::Value& value : key.values()) {
        bytes += std::size_t(value.data.size());
        require(key.value(value.name) != nullptr);
    }
    for (std::size_t i = 0; i < key.childCount(); ++i) {
        require(key.child(key.childAt(i)->name()) != nullptr);
        bytes += 1 + walk(*key.childAt(i));
    }
    return bytes;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    // A checksum is no obstacle to someone who means harm, so it must be none here. A hive is written as long
    // as there are higher sequence numbers.
    if (size >= regf::base::Size) {
        bytes[regf::base::PrimarySequence + 3] = 0;
        bytes[regf::base::SecondarySequence + 3] = 0;
        qToLittleEndian(regf::baseChecksum(bytes), bytes.data() + regf::base::Checksum);
    }
    Result<regf::Hive> hive = regf::Hive::parse(bytes);
    if (!hive)
        return 0;
    const std::size_t total = walk(hive->root());
    const Result<QByteArray> written = hive->serialize(1);
    if (!written) {
        require(hive->damaged() && written.errorNumber() == error::RegistryCorrupt);
        return 0;
    }
    const Result<regf::Hive> again = regf::Hive::parse(*written);
    require(again.ok());
    require(walk(again->root()) == total);
    require(!again->damaged());
    require(*again->serialize(1) != QByteArray());
    (void)hive->root().addPath(u"a\\b", 1);
    hive->root().removeChild(hive->root().childAt(0)->name(), 1);
    require(hive->serialize(2).ok());
    return 0;
}
