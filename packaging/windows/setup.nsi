; The installer for Windows, made by build-windows, which says what FILES, OUTPUT, VERSION and ICON are
; and writes remove.nsh, the list of what is installed. Exit statuses: 0 done, 1 called off by the user,
; 2 nothing was changed or not all of it, 3 done but the service does not start.
Unicode true
Target amd64-unicode
ManifestSupportedOS Win10
ManifestDPIAware true
ManifestLongPathAware true
RequestExecutionLevel admin
!include FileFunc.nsh
!include LogicLib.nsh
!include MUI2.nsh

!define UNINSTALL "Software\Microsoft\Windows\CurrentVersion\Uninstall\TarnexComm"
!define SERVICE "SYSTEM\CurrentControlSet\Services\TarnexComm"
!define MENU "$SMPROGRAMS\TarnexComm"
!define SETTINGS "$WINDIR\system\Tarnex.ini"
!define DATA "$APPDATA\TarnexComm" ; of all users, so %ProgramData%

Name TarnexComm
OutFile "${OUTPUT}"
InstallDir "$PROGRAMFILES64\TarnexComm"
InstallDirRegKey HKLM "${UNINSTALL}" InstallLocation
VIProductVersion "${VERSION}.0"
VIAddVersionKey ProductName TarnexComm
VIAddVersionKey ProductVersion "${VERSION}"
VIAddVersionKey FileVersion "${VERSION}"
VIAddVersionKey FileDescription "TarnexComm, the installer"
VIAddVersionKey CompanyName "TarnexComm developers"
VIAddVersionKey LegalCopyright "TarnexComm developers"

!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!define MUI_ABORTWARNING
!define MUI_FINISHPAGE_RUN
!define MUI_FINISHPAGE_RUN_TEXT "Set up the port, telephone numbers and mail now"
!define MUI_FINISHPAGE_RUN_FUNCTION SetUp
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE English

!macro Fail TEXT
    DetailPrint "${TEXT}"
    MessageBox MB_OK|MB_ICONSTOP "${TEXT}" /SD IDOK
    SetErrorLevel 2
    Quit
!macroend

; Stops the service. A service has stopped a moment before its program has ended, and a program that
; runs cannot be replaced: $0 is its name when it does not end, else "".
!macro StopPrograms UN
Function ${UN}StopPrograms
    nsExec::Exec '"$SYSDIR\net.exe" stop TarnexComm'
    Pop $0
    StrCpy $1 0
    again:
    StrCpy $0 ""
    !insertmacro Probe tarnexcomm.exe
    !insertmacro Probe tarnex-flasher.exe
    !insertmacro Probe tarnexctl.exe
    !insertmacro Probe tarnex-monitor.exe
    !insertmacro Probe tarnex-mail-sink.exe
    ${If} $0 != ""
    ${AndIf} $1 < 100
        IntOp $1 $1 + 1
        Sleep 100
        Goto again
    ${EndIf}
FunctionEnd
!macroend
!macro Probe PROGRAM
    ${If} ${FileExists} "$INSTDIR\bin\${PROGRAM}"
        ClearErrors
        FileOpen $2 "$INSTDIR\bin\${PROGRAM}" a
        ${If} ${Errors}
            StrCpy $0 ${PROGRAM}
        ${Else}
            FileClose $2
        ${EndIf}
    ${EndIf}
!macroend
!insertmacro StopPrograms ""
!insertmacro StopPrograms un.

; Below Program Files nobody else may write; elsewhere whoever may write to the folder above could
; put a program of his own into the service's place. The folder has to be ours alone for that.
Function CloseFolder
    StrLen $0 "$PROGRAMFILES64\"
    StrCpy $0 $INSTDIR $0
    ${If} $0 == "$PROGRAMFILES64\"
        Return
    ${EndIf}
    ReadRegStr $0 HKLM "${UNINSTALL}" InstallLocation
    ${DirState} "$INSTDIR" $1
    ${If} $0 != $INSTDIR
    ${AndIf} $1 = 1
        !insertmacro Fail "$INSTDIR holds other files. Name a folder for TarnexComm alone. Nothing was changed."
    ${EndIf}
    CreateDirectory "$INSTDIR"
    nsExec::Exec '"$SYSDIR\icacls.exe" "$INSTDIR" /setowner *S-1-5-32-544 /t /l /c /q'
    Pop $0
    nsExec::Exec '"$SYSDIR\icacls.exe" "$INSTDIR" /inheritance:r /grant:r *S-1-5-18:(OI)(CI)F *S-1-5-32-544:(OI)(CI)F *S-1-5-32-545:(OI)(CI)RX'
    Pop $1
    ${If} $0 != 0
    ${OrIf} $1 != 0
        !insertmacro Fail "Others than administrators may write to $INSTDIR, and Windows does not let that be changed. Name another folder."
    ${EndIf}
    ; What lies in it already gets what comes from the folder, and nothing else.
    nsExec::Exec '"$SYSDIR\icacls.exe" "$INSTDIR\*" /reset /t /l /c /q'
    Pop $0
FunctionEnd

; The same program under another name.
!macro Link NAME PROGRAM
    Delete "$INSTDIR\bin\${NAME}"
    System::Call 'kernel32::CreateHardLinkW(w "$INSTDIR\bin\${NAME}", w "$INSTDIR\bin\${PROGRAM}", p 0) i .r0'
    ${If} $0 = 0 ; not every file system has links
        CopyFiles /SILENT "$INSTDIR\bin\${PROGRAM}" "$INSTDIR\bin\${NAME}"
    ${EndIf}
!macroend

; An entry of the start menu that asks for an administrator's rights: bit 13 of the flags at byte 20.
!macro Elevated NAME PROGRAM ARGUMENTS
    CreateShortcut "${MENU}\${NAME}.lnk" "${PROGRAM}" '${ARGUMENTS}' "$INSTDIR\bin\tarnexcomm.exe"
    FileOpen $0 "${MENU}\${NAME}.lnk" a
    FileSeek $0 21
    FileReadByte $0 $1
    IntOp $1 $1 | 0x20
    FileSeek $0 21
    FileWriteByte $0 $1
    FileClose $0
!macroend

Function .onInit
    SetShellVarContext all
    ReadRegDWORD $0 HKLM "SOFTWARE\Microsoft\Windows NT\CurrentVersion" CurrentMajorVersionNumber
    ${If} $0 < 10 ; earlier ones have no such number
        !insertmacro Fail "TarnexComm needs Windows 10 or later."
    ${EndIf}
FunctionEnd

Function un.onInit
    SetShellVarContext all
FunctionEnd

Function SetUp
    ExecShell open "${MENU}\Set up.lnk"
FunctionEnd

Section
    Call CloseFolder
    ; One that an administrator has disabled stays disabled.
    ReadRegDWORD $R0 HKLM "${SERVICE}" Start
    Call StopPrograms
    ${If} $0 != ""
        StrCpy $R1 $0
        ${If} $R0 != 4
            nsExec::Exec '"$SYSDIR\net.exe" start TarnexComm'
            Pop $0
        ${EndIf}
        !insertmacro Fail "$R1 is running. Close it, then install again. Nothing was changed."
    ${EndIf}

    ClearErrors
    SetOutPath "$INSTDIR"
    File /r "${FILES}/*"
    WriteUninstaller "$INSTDIR\uninstall.exe"
    ${If} ${Errors}
        !insertmacro Fail "The files cannot be written to $INSTDIR."
    ${EndIf}
    !insertmacro Link tarnex-console.exe tarnex-flasher.exe
    !insertmacro Link tarnex-console.com tarnexcomm.exe
    !insertmacro Link tarnex-flasher.com tarnexcomm.exe

    CreateDirectory "${MENU}"
    !insertmacro Elevated "Set up" "$SYSDIR\cmd.exe" '/k ""$INSTDIR\bin\tarnexctl.exe" setup"'
    !insertmacro Elevated "Console" "$INSTDIR\bin\tarnex-console.exe" ""
    !insertmacro Elevated "Firmware" "$INSTDIR\bin\tarnex-flasher.exe" ""
    !insertmacro Elevated "TarnexComm prompt" "$SYSDIR\cmd.exe" '/k "set "PATH=%PATH%;$INSTDIR\bin""'
    CreateShortcut "${MENU}\Guides.lnk" "$INSTDIR\doc\README.html"
    CreateShortcut "${MENU}\Guide of the windows.lnk" "$INSTDIR\doc\windows.html"

    WriteRegStr HKLM "${UNINSTALL}" DisplayName TarnexComm
    WriteRegStr HKLM "${UNINSTALL}" DisplayVersion "${VERSION}"
    WriteRegStr HKLM "${UNINSTALL}" DisplayIcon "$INSTDIR\bin\tarnexcomm.exe"
    WriteRegStr HKLM "${UNINSTALL}" Publisher "TarnexComm developers"
    WriteRegStr HKLM "${UNINSTALL}" InstallLocation "$INSTDIR"
    WriteRegStr HKLM "${UNINSTALL}" UninstallString '"$INSTDIR\uninstall.exe"'
    WriteRegStr HKLM "${UNINSTALL}" QuietUninstallString '"$INSTDIR\uninstall.exe" /S'
    WriteRegDWORD HKLM "${UNINSTALL}" NoModify 1
    WriteRegDWORD HKLM "${UNINSTALL}" NoRepair 1
    ${GetSize} "$INSTDIR" "/S=0K" $0 $1 $2
    WriteRegDWORD HKLM "${UNINSTALL}" EstimatedSize $0

    ; The service makes its folder, or takes over what somebody else has made under that name.
    nsExec::ExecToStack '"$INSTDIR\bin\tarnexcomm.exe" /i'
    Pop $0
    Pop $1
    ${If} $0 != 0
        !insertmacro Fail "The service was not installed: $1"
    ${EndIf}
    ; Settings and log come once.
    WriteINIStr "$INSTDIR\share\tarnexcomm\Tarnex.ini.sample" Text "Text1(37)" "${DATA}\log.db"
    ${IfNot} ${FileExists} "${SETTINGS}"
        CreateDirectory "$WINDIR\system"
        ; As long as they are the sample, setting up replaces them.
        CopyFiles /SILENT "$INSTDIR\share\tarnexcomm\Tarnex.ini.sample" "${SETTINGS}"
        nsExec::Exec '"$SYSDIR\icacls.exe" "${SETTINGS}" /inheritance:r /grant:r *S-1-5-18:F *S-1-5-32-544:F'
        Pop $0
        ${IfNot} ${FileExists} "${DATA}\log.db"
            nsExec::Exec '"$INSTDIR\bin\tarnexctl.exe" log create "${DATA}\log.db"'
            Pop $0
        ${EndIf}
    ${EndIf}

    ${If} $R0 = 4
        nsExec::Exec '"$SYSDIR\sc.exe" config TarnexComm start= disabled'
        Pop $0
        DetailPrint "The service stays disabled."
    ${Else}
        nsExec::Exec '"$SYSDIR\net.exe" start TarnexComm'
        Pop $0
        ${If} $0 != 0
            SetErrorLevel 3
            MessageBox MB_OK|MB_ICONEXCLAMATION "The service is installed, but it does not start. The event viewer says why, under Windows Logs, Application, source TarnexComm." /SD IDOK
        ${EndIf}
    ${EndIf}
SectionEnd

; Settings, log and state stay unless somebody wants them gone: by the question, or by /PURGE.
Section Uninstall
    StrCpy $R0 keep
    ClearErrors
    ${GetParameters} $0
    ${GetOptions} $0 "/PURGE" $1
    ${IfNot} ${Errors}
        StrCpy $R0 purge
    ${ElseIf} ${Cmd} `MessageBox MB_YESNO|MB_ICONQUESTION|MB_DEFBUTTON2 "Delete the settings, the log and the history of messages too?$\n$\n${SETTINGS}$\n${DATA}" /SD IDNO IDYES`
        StrCpy $R0 purge
    ${EndIf}

    Call un.StopPrograms
    ${If} $0 != ""
        !insertmacro Fail "$0 is running. Close it, then remove TarnexComm. The service is stopped."
    ${EndIf}
    ${If} ${FileExists} "$INSTDIR\bin\tarnexcomm.exe"
        nsExec::ExecToStack '"$INSTDIR\bin\tarnexcomm.exe" /u'
        Pop $0
        Pop $1
        ; 69: there is no such service any more.
        ${If} $0 != 0
        ${AndIf} $0 != 69
            !insertmacro Fail "The service was not removed: $1"
        ${EndIf}
    ${EndIf}
    !include "${REMOVE}"
    Delete "$INSTDIR\bin\tarnex-console.exe"
    Delete "$INSTDIR\bin\tarnex-console.com"
    Delete "$INSTDIR\bin\tarnex-flasher.com"
    RMDir "$INSTDIR\bin"
    Delete "$INSTDIR\uninstall.exe"
    RMDir "$INSTDIR"
    RMDir /r "${MENU}"
    DeleteRegKey HKLM "${UNINSTALL}"
    ${If} $R0 == purge
        Delete "${SETTINGS}"
        Delete "${SETTINGS}.lock"
        Delete "$WINDIR\system\Tarnex-debug*.log"
        RMDir /r "${DATA}"
    ${EndIf}
SectionEnd
