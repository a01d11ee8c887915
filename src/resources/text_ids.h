#pragma once

#include <QtGlobal>

/// The numbers of all texts, menus, commands and dialog controls. A language module carries the same numbers.

/// Strings. Those from 40000 on are texts that the platform's string table has no number for, those from
/// 41000 on belong to windows of the program's own.
namespace quoril::text {

// Start-up and the shell.
inline constexpr quint32 OleInitFailed = 100;
inline constexpr quint32 DocumentTemplate = 128;
inline constexpr quint32 SelectService = 208;
inline constexpr quint32 AboutText = 212;
inline constexpr quint32 PrintDocumentName = 213;
inline constexpr quint32 LocalComputerMissed = 224;
inline constexpr quint32 PerformanceMonitor = 225;
inline constexpr quint32 ApplicationTitle = 57344;
inline constexpr quint32 IdleMessage = 57345;
inline constexpr quint32 IndicatorCaps = 59137;
inline constexpr quint32 IndicatorNum = 59138;
inline constexpr quint32 IndicatorScroll = 59139;

// Columns and rows of the panel.
inline constexpr quint32 ColumnMessageId = 205;
inline constexpr quint32 ColumnMessageText = 206;
inline constexpr quint32 ColumnDate = 207;
inline constexpr quint32 ColumnComponent = 214;
inline constexpr quint32 ColumnValue = 215;
inline constexpr quint32 EmulationType = 216;
inline constexpr quint32 HomeDirectory = 217;
inline constexpr quint32 AdvancedCpuMode = 218;
inline constexpr quint32 RamSize = 219;
inline constexpr quint32 Rom = 220;
inline constexpr quint32 Toy = 221;
inline constexpr quint32 MscpDevice = 222;

// Messages with numbers of the platform.
inline constexpr quint32 UnexpectedError = 500;
inline constexpr quint32 ApplicationLogBegin = 502;
inline constexpr quint32 ApplicationLogEnd = 503;
inline constexpr quint32 SystemLogBegin = 504;
inline constexpr quint32 SystemLogEnd = 505;
inline constexpr quint32 LogFileNotOpened = 506;
inline constexpr quint32 LogFileNotDefined = 507;
inline constexpr quint32 NewServiceInstalled = 508;
inline constexpr quint32 NoDefaultPrinter = 509;
inline constexpr quint32 PrinterNotInitialized = 510;
inline constexpr quint32 PageNotStarted = 511;
inline constexpr quint32 MonitorNotStarted = 512;

// Messages of the problem report.
inline constexpr quint32 RegistryKeyNotRead = 62000;
inline constexpr quint32 AttachmentNotCreated = 62001;
inline constexpr quint32 ConfigurationNotOpened = 62002;
inline constexpr quint32 TemporaryNotCreated = 62010;
inline constexpr quint32 OutputNotOpened = 62014;
inline constexpr quint32 TemporaryNotOpened = 62015;
inline constexpr quint32 OutputNotWritten = 62016;
inline constexpr quint32 ReportStored = 62017;

// Operations on a service.
inline constexpr quint32 ManagerConnectFailed = 40000;
inline constexpr quint32 ServiceConnectFailed = 40001;
inline constexpr quint32 ServiceQueryFailed = 40002;
inline constexpr quint32 ServiceStartFailed = 40003;
inline constexpr quint32 ServiceStopFailed = 40004;
inline constexpr quint32 PrerequisiteStartFailed = 40005;
inline constexpr quint32 DatabaseLockFailed = 40006;
inline constexpr quint32 ServiceChangeFailed = 40007;

// Removal through the service manager; the reason follows where there is one.
inline constexpr quint32 RemovalManagerConnectFailed = 40010;
inline constexpr quint32 RemovalServiceConnectFailed = 40011;
inline constexpr quint32 RemovalQueryFailed = 40012;
inline constexpr quint32 RemovalStillRunning = 40013;
inline constexpr quint32 RemovalFailed = 40014;
inline constexpr quint32 Reason = 40015;
inline constexpr quint32 RemovalQuestion = 40016;
inline constexpr quint32 ServiceNotInstalled = 40017;
inline constexpr quint32 CreateProcessFailed = 40018;

// Timed information boxes.
inline constexpr quint32 WaitStarted = 40020;
inline constexpr quint32 WaitStopped = 40021;
inline constexpr quint32 WaitReconfiguration = 40022;
inline constexpr quint32 WaitPrerequisite = 40023;
inline constexpr quint32 WaitScheduling = 40024;
inline constexpr quint32 WaitRemoved = 40025;
inline constexpr quint32 Ready = 40026;

// Status and start type of a service.
inline constexpr quint32 StatusUnknown = 40030;
inline constexpr quint32 StatusPaused = 40031;
inline constexpr quint32 StatusStarted = 40032;
inline constexpr quint32 StatusStopped = 40033;
inline constexpr quint32 StartAutomatic = 40034;
inline constexpr quint32 StartManual = 40035;
inline constexpr quint32 StartDisabled = 40036;

// Message boxes.
inline constexpr quint32 ErrorTitle = 40040;
inline constexpr quint32 SeverityMessage = 40041;
inline constexpr quint32 SeverityWarning = 40042;
inline constexpr quint32 SeverityError = 40043;

// Installation and update.
inline constexpr quint32 EnterServiceName = 40050;
inline constexpr quint32 ExecutablePathMissing = 40051;
inline constexpr quint32 InstallationFailed = 40052;
inline constexpr quint32 DirectoryNotChanged = 40053;
inline constexpr quint32 DestinationDirectory = 40054;
inline constexpr quint32 ServiceUpdated = 40055;
inline constexpr quint32 ServiceInstalled = 40056;
inline constexpr quint32 ConfigurationFilter = 40057;

// Schedule.
inline constexpr quint32 ColumnServiceName = 40060;
inline constexpr quint32 ColumnScheduleDate = 40061;
inline constexpr quint32 ColumnAction = 40062;
inline constexpr quint32 ActionStart = 40063;
inline constexpr quint32 ActionStop = 40064;
inline constexpr quint32 ActionUnknown = 40065;

// Idle times, in the order of the list.
inline constexpr quint32 LockDisabled = 40070;
inline constexpr quint32 Lock10Seconds = 40071;
inline constexpr quint32 Lock30Seconds = 40072;
inline constexpr quint32 Lock1Minute = 40073;
inline constexpr quint32 Lock10Minutes = 40074;
inline constexpr quint32 Lock20Minutes = 40075;
inline constexpr quint32 Lock30Minutes = 40076;
inline constexpr quint32 Lock1Hour = 40077;
inline constexpr quint32 Lock2Hours = 40078;
inline constexpr quint32 Lock4Hours = 40079;
inline constexpr quint32 Lock8Hours = 40080;
inline constexpr quint32 Lock12Hours = 40081;
inline constexpr quint32 Lock24Hours = 40082;

// Device rows of the configuration and the report's filter.
inline constexpr quint32 ScsiDevice = 40090;
inline constexpr quint32 Device = 40091;
inline constexpr quint32 VersionTemplate = 40092;
inline constexpr quint32 ReportFilter = 40093;
inline constexpr quint32 VirtualScsiDisk = 40094;
inline constexpr quint32 PhysicalScsiDisk = 40095;
inline constexpr quint32 ScsiFloppy = 40096;
inline constexpr quint32 ScsiController = 40097;

// Buttons and words of the program's own windows.
inline constexpr quint32 HelpTitle = 41000;
inline constexpr quint32 HelpContents = 41001;
inline constexpr quint32 HelpNotFound = 41002;
inline constexpr quint32 Ok = 41003;
inline constexpr quint32 Cancel = 41004;
inline constexpr quint32 Yes = 41005;
inline constexpr quint32 No = 41006;
inline constexpr quint32 SaveReportTitle = 41011;
inline constexpr quint32 OpenConfigurationTitle = 41012;

// Printing and its preview.
inline constexpr quint32 Print = 41020;
inline constexpr quint32 ReplaceFile = 41022;

// Names of the panes for assistive tools.
inline constexpr quint32 TreeName = 41040;
inline constexpr quint32 PanelName = 41041;
inline constexpr quint32 ToolbarName = 41042;

// Choice of the machine and the set-up program.
inline constexpr quint32 MachineNotOpened = 41050;
inline constexpr quint32 SetupArguments = 41051;
inline constexpr quint32 DocumentNotFound = 41052;
inline constexpr quint32 ServiceNameUnsafe = 41053;
inline constexpr quint32 ConfigurationFileUnsafe = 41054;
inline constexpr quint32 ExecutablePathUnsafe = 41055;
inline constexpr quint32 ArgumentHasQuote = 41056;
inline constexpr quint32 ArgumentEndsInBackslash = 41057;
inline constexpr quint32 ArgumentHasControl = 41058;
inline constexpr quint32 CommandLineTooLong = 41059;
inline constexpr quint32 FileOutsideMachine = 41060;
inline constexpr quint32 FileIsFolder = 41061;
inline constexpr quint32 StrayArgument = 41062;

} // namespace quoril::text

/// Menus.
namespace quoril::menu {
inline constexpr quint32 Main = 128;
inline constexpr quint32 Tree = 143;
inline constexpr quint32 List = 146;
} // namespace quoril::menu

/// Commands of the menu bar, the toolbar and the pop-up menus. A command's prompt is the string of its
/// number.
namespace quoril::command {
inline constexpr quint32 Manage = 32785;
inline constexpr quint32 Remove = 32801;
inline constexpr quint32 UpdateList = 32782;
inline constexpr quint32 Schedule = 32778;
inline constexpr quint32 Security = 32789;
inline constexpr quint32 Mail = 57612;
inline constexpr quint32 Print = 57607;
inline constexpr quint32 PrintDirect = 57608;
inline constexpr quint32 PrintPreview = 57609;
inline constexpr quint32 PrintSetup = 57606;
inline constexpr quint32 Exit = 57665;
inline constexpr quint32 Toolbar = 59392;
inline constexpr quint32 StatusBar = 59393;
inline constexpr quint32 EventLog = 32786;
inline constexpr quint32 Configuration = 32787;
inline constexpr quint32 SystemMonitor = 32799;
inline constexpr quint32 HelpTopics = 57667;
inline constexpr quint32 About = 57664;
inline constexpr quint32 ContextHelp = 57669;
inline constexpr quint32 Help = 57670;
inline constexpr quint32 DefaultHelp = 57671;

// The pop-up menus of the tree and the panel.
inline constexpr quint32 TreeManage = 32808;
inline constexpr quint32 TreeRemove = 32809;
inline constexpr quint32 TreeScheduleStart = 32810;
inline constexpr quint32 TreeScheduleStop = 32814;
inline constexpr quint32 TreeMail = 32811;
inline constexpr quint32 TreePrint = 32812;
inline constexpr quint32 TreePrintPreview = 32813;
inline constexpr quint32 TreeConfiguration = 32806;
inline constexpr quint32 TreeEventLog = 32807;
inline constexpr quint32 CopySelection = 32817;
} // namespace quoril::command

/// Dialogs: `Id` is the number of the template, the others are its controls. A control without a constant
/// text (an edit, a list, a picker) has no caption in the module.

namespace quoril::about_dialog {
inline constexpr quint32 Id = 101;
inline constexpr quint32 Text = 1059;
inline constexpr quint32 Ok = 1;
} // namespace quoril::about_dialog

namespace quoril::manage_dialog {
inline constexpr quint32 Id = 130;
inline constexpr quint32 NameLabel = 60000;
inline constexpr quint32 Name = 1003;
inline constexpr quint32 DescriptionLabel = 60001;
inline constexpr quint32 Description = 1011;
inline constexpr quint32 PathLabel = 60002;
inline constexpr quint32 Path = 1012;
inline constexpr quint32 StartupTypeLabel = 60003;
inline constexpr quint32 StartupType = 1020;
inline constexpr quint32 Apply = 1024;
inline constexpr quint32 StartStopGroup = 60004;
inline constexpr quint32 Start = 1021;
inline constexpr quint32 Stop = 1022;
inline constexpr quint32 StatusGroup = 60005;
inline constexpr quint32 StatusLabel = 60006;
inline constexpr quint32 Status = 1017;
inline constexpr quint32 Ok = 1;
inline constexpr quint32 Cancel = 2;
} // namespace quoril::manage_dialog

namespace quoril::security_dialog {
inline constexpr quint32 Id = 133;
inline constexpr quint32 SettingsGroup = 60000;
inline constexpr quint32 LockTime = 1034;
inline constexpr quint32 Ok = 1;
inline constexpr quint32 Cancel = 2;
} // namespace quoril::security_dialog

namespace quoril::print_setup_dialog {
inline constexpr quint32 Id = 139;
inline constexpr quint32 PrinterLabel = 60000;
inline constexpr quint32 PaperLabel = 60001;
inline constexpr quint32 OrientationLabel = 60002;
inline constexpr quint32 PdfFile = 60003;
inline constexpr quint32 Portrait = 60004;
inline constexpr quint32 Landscape = 60005;
inline constexpr quint32 Printer = 1060;
inline constexpr quint32 Paper = 1061;
inline constexpr quint32 Orientation = 1062;
inline constexpr quint32 Ok = 1;
inline constexpr quint32 Cancel = 2;
} // namespace quoril::print_setup_dialog

namespace quoril::preview_dialog {
inline constexpr quint32 Id = 140;
inline constexpr quint32 Print = 1100;
inline constexpr quint32 Next = 1101;
inline constexpr quint32 Previous = 1102;
inline constexpr quint32 TwoPages = 1103;
inline constexpr quint32 OnePage = 60000;
inline constexpr quint32 ZoomIn = 1104;
inline constexpr quint32 ZoomOut = 1105;
inline constexpr quint32 Place = 1106;
inline constexpr quint32 PlaceText = 60001;
inline constexpr quint32 Close = 2;
} // namespace quoril::preview_dialog

namespace quoril::print_dialog {
inline constexpr quint32 Id = 141;
inline constexpr quint32 PrinterLabel = 60000;
inline constexpr quint32 Printer = 1060;
inline constexpr quint32 PdfFile = 60001;
inline constexpr quint32 FileLabel = 60002;
inline constexpr quint32 File = 1070;
inline constexpr quint32 Browse = 1071;
inline constexpr quint32 RangeGroup = 60003;
inline constexpr quint32 AllRows = 1072;
inline constexpr quint32 Selection = 1073;
inline constexpr quint32 CopiesLabel = 60004;
inline constexpr quint32 Copies = 1074;
inline constexpr quint32 Ok = 1;
inline constexpr quint32 Cancel = 2;
} // namespace quoril::print_dialog

namespace quoril::wake_up_dialog {
inline constexpr quint32 Id = 135;
inline constexpr quint32 PasswordGroup = 60000;
inline constexpr quint32 UserLabel = 60001;
inline constexpr quint32 User = 1037;
inline constexpr quint32 PasswordLabel = 60002;
inline constexpr quint32 Password = 1035;
inline constexpr quint32 Ok = 1;
inline constexpr quint32 Cancel = 2;
} // namespace quoril::wake_up_dialog

namespace quoril::inform_dialog {
inline constexpr quint32 Id = 137;
inline constexpr quint32 Text = 1037;
} // namespace quoril::inform_dialog

namespace quoril::schedule_dialog {
inline constexpr quint32 Id = 138;
inline constexpr quint32 MomentGroup = 60000;
inline constexpr quint32 DateLabel = 60001;
inline constexpr quint32 Date = 1040;
inline constexpr quint32 TimeLabel = 60002;
inline constexpr quint32 Time = 1041;
inline constexpr quint32 SetStart = 1021;
inline constexpr quint32 SetStop = 1022;
inline constexpr quint32 Orders = 1048;
inline constexpr quint32 Remove = 1050;
inline constexpr quint32 Ok = 1;
inline constexpr quint32 Cancel = 2;
} // namespace quoril::schedule_dialog

namespace quoril::install_dialog {
inline constexpr quint32 Id = 1001;
inline constexpr quint32 NameLabel = 60000;
inline constexpr quint32 Name = 1003;
inline constexpr quint32 ProductLabel = 60001;
inline constexpr quint32 Product = 1007;
inline constexpr quint32 ConfigurationLabel = 60002;
inline constexpr quint32 Configuration = 1004;
inline constexpr quint32 Browse = 1000;
inline constexpr quint32 Install = 1;
inline constexpr quint32 Cancel = 2;
} // namespace quoril::install_dialog

namespace quoril::remove_dialog {
inline constexpr quint32 Id = 1002;
inline constexpr quint32 NameLabel = 60000;
inline constexpr quint32 Name = 1008;
inline constexpr quint32 Remove = 1;
inline constexpr quint32 Cancel = 2;
} // namespace quoril::remove_dialog

namespace quoril::update_or_install_dialog {
inline constexpr quint32 Id = 1003;
inline constexpr quint32 DetectedGroup = 60000;
inline constexpr quint32 ChooseLabel = 60001;
inline constexpr quint32 Update = 1012;
inline constexpr quint32 Install = 1013;
inline constexpr quint32 Return = 1;
inline constexpr quint32 Cancel = 2;
} // namespace quoril::update_or_install_dialog

namespace quoril::update_dialog {
inline constexpr quint32 Id = 1004;
inline constexpr quint32 ServicesLabel = 60000;
inline constexpr quint32 Services = 1006;
inline constexpr quint32 ProductLabel = 60001;
inline constexpr quint32 Product = 1007;
inline constexpr quint32 ConfigurationLabel = 60002;
inline constexpr quint32 Configuration = 1004;
inline constexpr quint32 Update = 1;
inline constexpr quint32 Cancel = 2;
} // namespace quoril::update_dialog
