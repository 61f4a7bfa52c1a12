; The installer. packaging/windows/package runs it with
;   WIDTH       64 or 32
;   VERSION     as in CMakeLists.txt
;   PROGRAMS    the folder with the programs
;   SOURCE      the root of the source tree
;   OUTPUT      the installer to make
;
; Silent: /S, with /FIREWALL to let consoles of other machines in, /WEB to install halvex-web, and /D=FOLDER at the
; very end. The uninstaller, silent: /S, with /REMOVEDATA to remove settings and history as well.

Unicode true
!if ${WIDTH} == 64
    Target amd64-unicode
!endif
!include MUI2.nsh
!include FileFunc.nsh
!include LogicLib.nsh

!define NAME "Halvex Service"
!define PROGRAM "HalvexLocalService.exe"
!define WEB_NAME "Halvex Web"
!define WEB_PROGRAM "halvex-web.exe"
!define SERVICE_KEY "System\CurrentControlSet\Services\${NAME}"
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\${NAME}"
; What the service's key held, for a later installation.
!define KEPT_KEY "Software\${NAME}"

Name "${NAME}"
OutFile "${OUTPUT}"
InstallDir "$PROGRAMFILES${WIDTH}\${NAME}"
RequestExecutionLevel admin
SetCompressor /SOLID lzma
VIProductVersion "${VERSION}.0"
VIAddVersionKey ProductName "${NAME}"
VIAddVersionKey ProductVersion "${VERSION}"
VIAddVersionKey FileVersion "${VERSION}"
VIAddVersionKey FileDescription "Installs the ${NAME}"
VIAddVersionKey CompanyName "The Halvex developers"
VIAddVersionKey LegalCopyright "The Halvex developers, MIT License"

; Accounts, by the numbers that are the same in every language of Windows.
!define SYSTEM "*S-1-5-18"
!define LOCALSERVICE "*S-1-5-19"
!define ADMINISTRATORS "*S-1-5-32-544"
!define USERS "*S-1-5-32-545"

!define MUI_ICON "${SOURCE}\packaging\windows\halvex.ico"
!define MUI_UNICON "${SOURCE}\packaging\windows\halvex.ico"
!insertmacro MUI_PAGE_LICENSE "${SOURCE}\LICENSE"
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_COMPONENTS
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_UNPAGE_COMPONENTS
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE English

; Both the installer and the uninstaller need these, and NSIS keeps their functions apart.
!macro SharedFunctions prefix
; Returns when the program $0 is no longer in use.
Function ${prefix}WaitForEnd
    ${For} $2 1 60
        ClearErrors
        FileOpen $1 "$0" a ; refused while the program runs
        ${IfNot} ${Errors}
            FileClose $1
            Return
        ${EndIf}
        Sleep 500
    ${Next}
    DetailPrint "The service does not stop."
    SetErrorLevel 2
    Abort
FunctionEnd

; Stops the services whose programs are in the folder $0, and returns when they are no longer in use.
Function ${prefix}StopServices
    StrCpy $3 $0
    ${If} ${FileExists} "$3\${WEB_PROGRAM}"
        nsExec::ExecToLog '"$SYSDIR\net.exe" stop "${WEB_NAME}"'
        Pop $1
        StrCpy $0 "$3\${WEB_PROGRAM}"
        Call ${prefix}WaitForEnd
    ${EndIf}
    ${If} ${FileExists} "$3\${PROGRAM}"
        nsExec::ExecToLog '"$3\${PROGRAM}" -terminate'
        Pop $1
        StrCpy $0 "$3\${PROGRAM}"
        Call ${prefix}WaitForEnd
    ${EndIf}
    StrCpy $0 $3
FunctionEnd

; Removes the service of halvex-web, whose program in the folder $0 no longer runs.
Function ${prefix}RemoveWeb
    nsExec::ExecToLog '"$SYSDIR\sc.exe" delete "${WEB_NAME}"'
    Pop $1
    Delete "$0\${WEB_PROGRAM}"
FunctionEnd

; Copies the values of the key $0 to the key $1, but those of the service manager: whatever an administrator has
; set stays, and so does what the installer does not know.
Function ${prefix}CopyValues
    StrCpy $5 0
    ${Do}
        EnumRegValue $2 HKLM "$0" $5
        ${If} $2 == ""
            ${ExitDo}
        ${EndIf}
        IntOp $5 $5 + 1
        ${If} $2 == "Type"
        ${OrIf} $2 == "Start"
        ${OrIf} $2 == "ErrorControl"
        ${OrIf} $2 == "ImagePath"
        ${OrIf} $2 == "DisplayName"
        ${OrIf} $2 == "Description"
        ${OrIf} $2 == "ObjectName"
        ${OrIf} $2 == "WOW64"
            ${Continue}
        ${EndIf}
        ClearErrors
        ReadRegDWORD $3 HKLM "$0" "$2"
        ${IfNot} ${Errors}
            WriteRegDWORD HKLM "$1" "$2" $3
            ${Continue}
        ${EndIf}
        ClearErrors
        ReadRegStr $3 HKLM "$0" "$2"
        ${IfNot} ${Errors}
            WriteRegStr HKLM "$1" "$2" $3
        ${EndIf}
    ${Loop}
FunctionEnd

Function ${prefix}RemoveFirewallRule
    nsExec::ExecToLog '"$SYSDIR\netsh.exe" advfirewall firewall delete rule name="${NAME}"'
    Pop $0
FunctionEnd
!macroend
!insertmacro SharedFunctions ""
!insertmacro SharedFunctions "un."

; halvex-web writes to its own folder alone: readable for administrators and its account, LocalService.
Function ProtectWebFolder
    SetShellVarContext all
    CreateDirectory "$APPDATA\${WEB_NAME}"
    nsExec::ExecToLog '"$SYSDIR\icacls.exe" "$APPDATA\${WEB_NAME}" /inheritance:r /grant:r ${SYSTEM}:(OI)(CI)F ${ADMINISTRATORS}:(OI)(CI)F ${LOCALSERVICE}:(OI)(CI)M'
    Pop $0
    nsExec::ExecToLog '"$SYSDIR\icacls.exe" "$INSTDIR\${WEB_PROGRAM}" /grant:r ${USERS}:RX'
    Pop $0
FunctionEnd

; What the service will write here, a mail account's password in it, is for the system and administrators alone;
; everybody may run the programs.
Function ProtectFolder
    nsExec::ExecToLog '"$SYSDIR\icacls.exe" "$INSTDIR" /inheritance:r /grant:r ${SYSTEM}:(OI)(CI)F ${ADMINISTRATORS}:(OI)(CI)F ${USERS}:RX'
    Pop $0
    nsExec::ExecToLog '"$SYSDIR\icacls.exe" "$INSTDIR\*.exe" /grant:r ${USERS}:RX'
    Pop $0
FunctionEnd

Section "Service and console" SectionService
    SectionIn RO
    SetRegView ${WIDTH}
    ; An older installation ends here, wherever it is. Its values stay.
    ReadRegStr $0 HKLM "${UNINSTALL_KEY}" InstallLocation
    ${If} $0 != ""
        Call StopServices
        Call RemoveWeb
        StrCpy $4 $0
        StrCpy $0 "${SERVICE_KEY}"
        StrCpy $1 "${KEPT_KEY}"
        Call CopyValues
        nsExec::ExecToLog '"$4\${PROGRAM}" -uninstall'
        Pop $0
    ${EndIf}

    SetOutPath $INSTDIR
    File "${PROGRAMS}\${PROGRAM}"
    File "${PROGRAMS}\halvexctl.exe"
    File /oname=LICENSE.txt "${SOURCE}\LICENSE"
    WriteUninstaller "$INSTDIR\uninstall.exe"
    Call ProtectFolder

    WriteRegStr HKLM "${UNINSTALL_KEY}" DisplayName "${NAME}"
    WriteRegStr HKLM "${UNINSTALL_KEY}" DisplayVersion "${VERSION}"
    WriteRegStr HKLM "${UNINSTALL_KEY}" DisplayIcon "$INSTDIR\${PROGRAM}"
    WriteRegStr HKLM "${UNINSTALL_KEY}" Publisher "The Halvex developers"
    WriteRegStr HKLM "${UNINSTALL_KEY}" InstallLocation "$INSTDIR"
    WriteRegStr HKLM "${UNINSTALL_KEY}" UninstallString '"$INSTDIR\uninstall.exe"'
    WriteRegStr HKLM "${UNINSTALL_KEY}" QuietUninstallString '"$INSTDIR\uninstall.exe" /S'
    WriteRegDWORD HKLM "${UNINSTALL_KEY}" NoModify 1
    WriteRegDWORD HKLM "${UNINSTALL_KEY}" NoRepair 1
    ${GetSize} "$INSTDIR" "/S=0K" $0 $1 $2
    WriteRegDWORD HKLM "${UNINSTALL_KEY}" EstimatedSize $0

    nsExec::ExecToLog '"$INSTDIR\${PROGRAM}" -install'
    Pop $0
    ${If} $0 != 0
        SetErrorLevel 2
        Abort
    ${EndIf}
    StrCpy $0 "${KEPT_KEY}"
    StrCpy $1 "${SERVICE_KEY}"
    Call CopyValues
    DeleteRegKey HKLM "${KEPT_KEY}"
SectionEnd

Section /o "Firewall: let consoles of other machines in" SectionFirewall
    Call RemoveFirewallRule ; or an installation over another would leave two
    ; For the program and not for a port, which the administrator may change.
    nsExec::ExecToLog '"$SYSDIR\netsh.exe" advfirewall firewall add rule name="${NAME}" dir=in action=allow protocol=TCP program="$INSTDIR\${PROGRAM}"'
    Pop $0
SectionEnd

Section /o "Page and metrics" SectionWeb
    SetOutPath $INSTDIR
    File "${PROGRAMS}\${WEB_PROGRAM}"
    Call ProtectWebFolder
    nsExec::ExecToLog '"$SYSDIR\sc.exe" create "${WEB_NAME}" binPath= "\"$INSTDIR\${WEB_PROGRAM}\"" start= auto obj= "NT AUTHORITY\LocalService"'
    Pop $0
    ${If} $0 != 0
        SetErrorLevel 2
        Abort
    ${EndIf}
    nsExec::ExecToLog '"$SYSDIR\sc.exe" description "${WEB_NAME}" "Page and metrics of Halvex services"'
    Pop $0
    nsExec::ExecToLog '"$SYSDIR\net.exe" start "${WEB_NAME}"'
    Pop $0
    ${If} $0 != 0
        SetErrorLevel 2
    ${EndIf}
SectionEnd

Section "-Start"
    nsExec::ExecToLog '"$SYSDIR\net.exe" start "${NAME}"'
    Pop $0
    ${If} $0 != 0
        SetErrorLevel 2
    ${EndIf}
SectionEnd

Function .onInit
    SetRegView ${WIDTH}
    ${If} $INSTDIR == "$PROGRAMFILES${WIDTH}\${NAME}"
        ReadRegStr $0 HKLM "${UNINSTALL_KEY}" InstallLocation
        ${If} $0 != ""
            StrCpy $INSTDIR $0
        ${EndIf}
    ${EndIf}
    ${GetParameters} $0
    ClearErrors
    ${GetOptions} $0 "/FIREWALL" $1
    ${IfNot} ${Errors}
        SectionSetFlags ${SectionFirewall} ${SF_SELECTED}
    ${EndIf}
    ClearErrors
    ${GetOptions} $0 "/WEB" $1
    ${IfNot} ${Errors}
    ${OrIf} ${FileExists} "$INSTDIR\${WEB_PROGRAM}" ; an upgrade
        SectionSetFlags ${SectionWeb} ${SF_SELECTED}
    ${EndIf}
FunctionEnd

LangString DescriptionService ${LANG_ENGLISH} "The service, which starts now and with Windows, and halvexctl, the console for the command line."
LangString DescriptionFirewall ${LANG_ENGLISH} "Whoever reaches the service over the network can change its settings: tick this in trusted networks only."
LangString DescriptionWeb ${LANG_ENGLISH} "halvex-web: a page for the browser at http://127.0.0.1:8643/, a history and metrics. Runs as a service of its own without privileges."
!insertmacro MUI_FUNCTION_DESCRIPTION_BEGIN
    !insertmacro MUI_DESCRIPTION_TEXT ${SectionService} $(DescriptionService)
    !insertmacro MUI_DESCRIPTION_TEXT ${SectionFirewall} $(DescriptionFirewall)
    !insertmacro MUI_DESCRIPTION_TEXT ${SectionWeb} $(DescriptionWeb)
!insertmacro MUI_FUNCTION_DESCRIPTION_END

Section "un.Service and console" SectionUninstall
    SectionIn RO
    SetRegView ${WIDTH}
    StrCpy $0 $INSTDIR
    Call un.StopServices
    Call un.RemoveWeb
    StrCpy $0 "${SERVICE_KEY}"
    StrCpy $1 "${KEPT_KEY}"
    Call un.CopyValues
    nsExec::ExecToLog '"$INSTDIR\${PROGRAM}" -uninstall'
    Pop $0
    Call un.RemoveFirewallRule
    Delete "$INSTDIR\${PROGRAM}"
    Delete "$INSTDIR\halvexctl.exe"
    Delete "$INSTDIR\LICENSE.txt"
    Delete "$INSTDIR\uninstall.exe"
    DeleteRegKey HKLM "${UNINSTALL_KEY}"
SectionEnd

Section /o "un.Settings and temperature history" SectionData
    Delete "$INSTDIR\HalvexService.ini"
    Delete "$INSTDIR\temperature.log"
    SetShellVarContext all
    Delete "$APPDATA\${WEB_NAME}\*"
    RMDir "$APPDATA\${WEB_NAME}"
    DeleteRegKey HKLM "${KEPT_KEY}"
SectionEnd

Section "-un.Folder"
    RMDir "$INSTDIR" ; stays where something of the user's is in it
SectionEnd

Function un.onInit
    ${GetParameters} $0
    ClearErrors
    ${GetOptions} $0 "/REMOVEDATA" $1
    ${IfNot} ${Errors}
        SectionSetFlags ${SectionData} ${SF_SELECTED}
    ${EndIf}
FunctionEnd
