#pragma once

#include "platform/clock.h"
#include "platform/files.h"
#include "platform/machine.h"
#include "platform/processes.h"
#include "platform/registry.h"
#include "platform/services.h"
#include "platform/session.h"

#include <QString>
#include <gtest/gtest.h>

#include <memory>
#include <utility>

namespace quoril::test {

using namespace Qt::StringLiterals;

/// A machine on which a backend has to keep the contract, with what the tests need on it.
class ContractMachine
{
public:
    virtual ~ContractMachine() = default;

    virtual Machine& machine() = 0;
    /// A machine path of a folder for the test alone, empty at first.
    virtual QString folder() const = 0;
    /// The machine path of the emulator, without blanks.
    virtual QString emulator() const = 0;
    /// A command line of a program that runs until it is terminated.
    virtual QString endlessProgram() const = 0;
    /// The application and the command line of a program in the system's folder that ends with 3.
    virtual std::pair<QString, QString> systemProgram() const = 0;
    /// Whether the backend is Windows' own, or what stands in for it here. Where that is known to differ from
    /// Windows, a test asks and says so.
    virtual bool isWine() const { return false; }
};

/// The machine of the backend that this program is built for.
std::unique_ptr<ContractMachine> makeContractMachine();

/// A test of the contract.
class ContractTest : public testing::Test
{
protected:
    std::unique_ptr<ContractMachine> contract = makeContractMachine();
    Machine& machine = contract->machine();
};

} // namespace quoril::test
