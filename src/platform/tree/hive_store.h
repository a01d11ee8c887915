#pragma once

#include "formats/error.h"
#include "formats/regf_hive.h"

#include <functional>
#include <mutex>
#include <optional>

namespace quoril {

/// A hive that keys are open in. Whoever touches the hive holds the mutex. The generation changes when the
/// hive is read again and when a key is removed: pointers to keys are void then.
class HiveStore
{
public:
    HiveStore() = default;
    virtual ~HiveStore() = default;
    HiveStore(const HiveStore&) = delete;
    HiveStore& operator=(const HiveStore&) = delete;

    /// Sees to it that the hive is there and as new as its file. The error of a hive that can't be opened.
    virtual Status refresh() = 0;

    using Change = std::function<Status(regf::Key& root, quint64 filetime)>;
    /// Applies a change to the newest state and makes it last. A change that fails has changed nothing.
    virtual Status change(const Change& apply) = 0;

    /// Says once, on standard error, that the hive is damaged, as far as it was read up to now: damage shows
    /// only where somebody looks. To be called where a key turns out to be missing.
    virtual void reportDamage() { }

    /// To be called by a change that removes a key.
    void noteRemoval() { ++m_generation; }

    std::recursive_mutex& mutex() { return m_mutex; }
    quint64 generation() const { return m_generation; }
    /// The root key; null after a refresh that failed.
    regf::Key* root() { return m_hive ? &m_hive->root() : nullptr; }

protected:
    void put(std::optional<regf::Hive> hive)
    {
        m_hive = std::move(hive);
        ++m_generation;
    }
    std::optional<regf::Hive>& hive() { return m_hive; }

private:
    std::recursive_mutex m_mutex;
    std::optional<regf::Hive> m_hive;
    quint64 m_generation = 0;
};

/// A hive that lives in memory only.
class VolatileHive : public HiveStore
{
public:
    explicit VolatileHive(regf::Hive hive) { put(std::move(hive)); }

    Status refresh() override { return {}; }
    Status change(const Change& apply) override;
};

/// The time as a FILETIME: units of 100 ns since 1601-01-01 UTC.
quint64 currentFiletime();

} // namespace quoril
