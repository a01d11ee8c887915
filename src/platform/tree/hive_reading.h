#pragma once

#include "formats/regf_hive.h"
#include "formats/regf_recovery.h"

#include <QFile>
#include <QStringView>

#include <functional>
#include <memory>
#include <optional>

namespace quoril {

/// Opens the file beside the hive whose name is the hive's and the suffix; 2 where there is none.
using OpenHiveLog = std::function<Result<std::unique_ptr<QFile>>(QStringView suffix)>;

/// Reads a hive from its open file, as far as its base block says that it goes. One that was not shut down
/// cleanly gets the changes of the logs beside it, in memory alone; `recovery` then says what was done, also
/// where the hive can't be read. 8 and 1015, and what the host gives for a file that can't be read.
Result<regf::Hive> readHive(QFile& file, const OpenHiveLog& openLog, std::optional<regf::Recovery>& recovery);

} // namespace quoril
