#pragma once

#include "shell/left_view.h"
#include "shell/main_frame.h"
#include "shell/quoril_manager_app.h"
#include "shell/quoril_manager_doc.h"
#include "support/fake_machine.h"
#include "support/person.h"

#include <QAction>

namespace quoril::test {

using namespace Qt::StringLiterals;

/// The console on a machine with the stopped instances "Alpha" and "Beta".
class ConsoleTest : public testing::Test
{
protected:
    ConsoleTest()
    {
        m_machine.addInstance(u"Alpha"_s);
        m_machine.addInstance(u"Beta"_s);
    }
    void SetUp() override { ASSERT_TRUE(m_console.InitInstance({u"console"_s})); }

    CMainFrame& frame() { return *m_console.mainFrame(); }
    CLeftView& tree() { return *frame().GetLeftView(); }
    QTreeWidgetItem* service(int index) { return tree().topLevelItem(0)->child(index); }
    QAction& action(quint32 id) { return *frame().commands().action(id); }

    FakeMachine m_machine;
    CQuorilManagerApp m_console;
};

} // namespace quoril::test
