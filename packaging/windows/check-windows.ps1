# Checks what a script can check of the list in windows-checklist.md, on a real Windows: each row is passed, failed or "look
# yourself". Run it as an administrator in the folder of the programs, with Windows PowerShell 5.1 or later:
#
#     powershell -ExecutionPolicy Bypass -File check-windows.ps1
#
# It asks before it changes anything. What it changes is one service of its own, QUORILCHECK, which it removes at the end,
# and files in a temporary folder. -Yes answers every question with yes, -Folder names another folder of programs.
param([string] $Folder = $PSScriptRoot, [switch] $Yes)

Set-StrictMode -Version 2
$ErrorActionPreference = 'Continue'
$ctl = Join-Path $Folder 'quorilctl.exe'
$emulator = Join-Path $Folder 'quoril-emulator.exe'
$console = Join-Path $Folder 'QuorilManager.exe'
$service = 'QUORILCHECK'
$failures = 0

function Write-Row([string] $Number, [string] $Result, [string] $What) {
    if ($Result -eq 'failed') { $script:failures++ }
    '{0,-4} {1,-13} {2}' -f $Number, $Result, $What
}

# One row that is true or false.
function Test-Row([string] $Number, [string] $What, [bool] $Passed) {
    if ($Passed) { Write-Row $Number 'passed' $What } else { Write-Row $Number 'failed' $What }
}

function Confirm-Change([string] $What) {
    if ($Yes) { return $true }
    return (Read-Host "$What [y/N]") -match '^[yY]'
}

# The text that quorilctl prints; its exit code is then in $LASTEXITCODE.
function Invoke-Ctl([string[]] $Arguments) {
    return (& $ctl @Arguments 2>$null) -join "`n"
}

function Get-State {
    $text = Invoke-Ctl @('--json', 'status', $service)
    if ($LASTEXITCODE -ne 0) { return 'unknown' }
    return ($text | ConvertFrom-Json).state
}

foreach ($program in @($ctl, $emulator, $console)) {
    if (-not (Test-Path $program)) { Write-Host "$program is missing."; exit 2 }
}
$identity = [Security.Principal.WindowsIdentity]::GetCurrent()
$principal = New-Object Security.Principal.WindowsPrincipal $identity
$isAdministrator = $principal.IsInRole([Security.Principal.WindowsBuiltInRole]::Administrator)

# What only reads.
[void](Invoke-Ctl @('--version'))
Test-Row '-' 'quorilctl runs' ($LASTEXITCODE -eq 0)

$names = Invoke-Ctl @('list', '--names')
if ($isAdministrator) {
    Test-Row '-' 'an administrator gets a list' ($LASTEXITCODE -eq 0)
    Write-Row '2' 'look yourself' 'without the rights of an administrator the console lists nothing'
} else {
    Test-Row '2' 'without the rights of an administrator nothing is listed' ($names -eq '')
}

$codePage = (cmd /c chcp) -join ''
[void](Invoke-Ctl @('list'))
Test-Row '24' 'the code page of the terminal is unchanged' (((cmd /c chcp) -join '') -eq $codePage)

$named = $env:QUORIL_MACHINE
$env:QUORIL_MACHINE = 'C:\no-such-folder-of-a-machine'
[void](Invoke-Ctl @('list'))
Test-Row '23' 'a misspelt QUORIL_MACHINE is an error' ($LASTEXITCODE -ne 0)
$env:QUORIL_MACHINE = $named

$removal = Start-Process cmd.exe -ArgumentList "/c `"`"$ctl`" remove $service <NUL >NUL 2>NUL`"" -Wait -PassThru -NoNewWindow
Test-Row '26' 'remove without a terminal ends with wrong usage' ($removal.ExitCode -eq 2)

# The modules of the console come from the system's folder.
if (Confirm-Change 'Start the console for three seconds?') {
    $process = Start-Process $console -PassThru
    Start-Sleep -Seconds 3
    $strangers = @($process.Modules | Where-Object {
        $_.FileName -ne $console -and -not $_.FileName.StartsWith("$env:SystemRoot\", 'OrdinalIgnoreCase') })
    [void]$process.CloseMainWindow()
    if (-not $process.WaitForExit(10000)) { $process.Kill() }
    if ($strangers.Count -eq 0) {
        Write-Row '22' 'passed' 'the console has loaded only DLLs of the system'
    } else {
        Write-Row '22' 'look yourself' ('loaded from elsewhere: ' + (($strangers | ForEach-Object { $_.FileName }) -join ', '))
    }
}

# What changes: a service of its own.
$isKnown = $null -ne (Get-Service -Name $service -ErrorAction SilentlyContinue)
if ($isKnown) {
    Write-Row '8' 'look yourself' "a service $service exists already; it is left alone"
} elseif ($isAdministrator -and (Confirm-Change "Install, run and remove the service $service?")) {
    $work = Join-Path ([IO.Path]::GetTempPath()) 'quoril check'
    [void](New-Item -ItemType Directory -Force $work)
    Copy-Item $emulator $work
    $configuration = Join-Path $work 'check.cfg'
    [IO.File]::WriteAllLines($configuration, [string[]] @( # in UTF-8
        'type = quoril_64', "home = $work", 'session.log = check.log', 'ram.size = 64'))
    $program = Join-Path $work 'quoril-emulator.exe'
    try {
        [void](Invoke-Ctl @('install', $service, '--config', $configuration, '--executable', $program))
        Test-Row '8' 'an instance is installed from a folder with blanks' ($LASTEXITCODE -eq 0)
        [void](Invoke-Ctl @('start', $service))
        Test-Row '8' 'it starts' ((Get-State) -eq 'running')
        [void](Invoke-Ctl @('set-start-type', $service, 'automatic'))
        Test-Row '5' 'its start type is changed' ((Get-Service -Name $service).StartType -eq 'Automatic')
        $log = Invoke-Ctl @('logs', $service)
        Test-Row '-' 'its own log is shown' ($log -match 'Start of session')
        if ($log -match 'Session started') {
            Write-Row '11' 'passed' 'the event that it reports is in Application'
        } else {
            Write-Row '11' 'look yourself' 'the event that it reports is not shown'
        }
        [void](Invoke-Ctl @('stop', $service))
        Start-Sleep -Seconds 2
        Test-Row '-' 'it stops' ((Get-State) -eq 'stopped')
        [void](Invoke-Ctl @('start', $service))
        Get-CimInstance Win32_Service -Filter "Name='$service'" |
            ForEach-Object { Stop-Process -Id $_.ProcessId -Force }
        Start-Sleep -Seconds 2
        $after = Invoke-Ctl @('--json', 'status', $service) | ConvertFrom-Json
        Test-Row '7' 'a killed instance is stopped with code 1067' ($after.state -eq 'stopped' -and $after.exitCode -eq 1067)
        $report = Join-Path $work 'report.txt'
        [void](Invoke-Ctl @('report', $service, '--output', $report))
        Test-Row '18' 'a problem report is written' ($LASTEXITCODE -eq 0 -and (Test-Path $report))
    } finally {
        if ((Get-State) -eq 'running') { [void](Invoke-Ctl @('stop', $service)); Start-Sleep -Seconds 2 }
        [void](Invoke-Ctl @('remove', '--yes', $service))
        Test-Row '-' 'it is removed' ($LASTEXITCODE -eq 0)
        Remove-Item -Recurse -Force $work
    }
}

foreach ($number in @('1', '3', '4', '6', '9', '10', '12-17', '19-21', '25', '27', '28')) {
    Write-Row $number 'look yourself' 'see windows-checklist.md'
}
''
"$failures failed"
exit [Math]::Min($failures, 1)
