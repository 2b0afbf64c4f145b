; The installer. scripts/package-windows.sh makes the lists of files and registry entries and calls makensis.
Target amd64-unicode
Unicode true
!include MUI2.nsh
!include WordFunc.nsh

Name "Tarno2"
OutFile "${PACKAGES}\${NAME}-setup.exe"
InstallDir "$PROGRAMFILES64\Tarno2"
InstallDirRegKey HKLM "Software\Microsoft\Windows\CurrentVersion\Uninstall\Tarno2" "InstallLocation"
RequestExecutionLevel admin
SetCompressor /SOLID lzma
ManifestDPIAware true

; Installer and uninstaller are signed by the command that signs the programs.
!ifdef SIGN
    !finalize '${SIGN} "%1"' = 0
    !uninstfinalize '${SIGN} "%1"' = 0
!endif

!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Tarno2"
!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"

VIProductVersion "${VERSION}"
VIAddVersionKey "ProductName" "Tarno2"
VIAddVersionKey "ProductVersion" "${VERSION}"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "FileDescription" "Installer of Tarno2"
VIAddVersionKey "LegalCopyright" "GPL-3.0-or-later"

!insertmacro MUI_PAGE_LICENSE "${LICENSE}"
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!define MUI_FINISHPAGE_RUN
!define MUI_FINISHPAGE_RUN_FUNCTION RunAsUser
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"
!insertmacro MUI_LANGUAGE "Russian"

LangString UninstallName ${LANG_ENGLISH} "Uninstall Tarno2"
LangString UninstallName ${LANG_RUSSIAN} "Удалить Tarno2"

LangString NewerInstalled ${LANG_ENGLISH} "Tarno2 $R0 is installed, which is newer than ${VERSION}. Remove it first to install the older one; settings and recordings stay."
LangString NewerInstalled ${LANG_RUSSIAN} "Установлена Tarno2 $R0, она новее, чем ${VERSION}. Чтобы установить старую версию, сначала удалите новую; настройки и записи останутся."
LangString OldNotRemoved ${LANG_ENGLISH} "The installed version of Tarno2 could not be removed. Close its programs and try again."
LangString OldNotRemoved ${LANG_RUSSIAN} "Не удалось удалить установленную версию Tarno2. Закройте её программы и повторите."
LangString RecordingName ${LANG_ENGLISH} "Recording of Tarno2"
LangString RecordingName ${LANG_RUSSIAN} "Запись Tarno2"

; What Windows does with recordings: data files have no type of their own (.dat belongs to many), so Tarno2 is one of
; the programs that are offered to open them.
!define RECORDING_KEY "Software\Classes\Tarno2.Recording"
!define OFFER_KEY "Software\Classes\.dat\OpenWithProgids"

!macro RegisterLibrary KEY LIBRARY
    WriteRegStr HKLM "${KEY}" "path" "$INSTDIR\${LIBRARY}"
!macroend

; An entry that names another library by now is somebody else's.
!macro UnregisterLibrary KEY LIBRARY
    ReadRegStr $0 HKLM "${KEY}" "path"
    ${If} $0 == "$INSTDIR\${LIBRARY}"
        DeleteRegKey HKLM "${KEY}"
    ${EndIf}
!macroend

; The programs are 64-bit ones, and everybody's.
!macro Everybody
    SetRegView 64
    SetShellVarContext all
!macroend

; Exit status of an installer that asks nothing: 2 after any refusal.
!macro Refuse TEXT
    MessageBox MB_OK|MB_ICONSTOP "${TEXT}" /SD IDOK
    SetErrorLevel 2
    Quit
!macroend

Function .onInit
    !insertmacro Everybody
    ReadRegStr $R0 HKLM "${UNINSTALL_KEY}" "DisplayVersion"
    ${If} $R0 != ""
        ${VersionCompare} "$R0" "${VERSION}" $R1
        ${If} $R1 == 1
            !insertmacro Refuse "$(NewerInstalled)"
        ${EndIf}
    ${EndIf}
FunctionEnd

; An older version goes by its own uninstaller, which leaves settings, logs and what others have registered. It runs where
; it lies, so that this installer can wait for it.
Function RemoveOlder
    ReadRegStr $R0 HKLM "${UNINSTALL_KEY}" "InstallLocation"
    ${If} $R0 != ""
    ${AndIf} ${FileExists} "$R0\uninstall.exe"
        ExecWait '"$R0\uninstall.exe" /S _?=$R0' $R1
        ${If} $R1 != 0
        ${OrIf} ${FileExists} "$R0\Tarno2.exe"
            !insertmacro Refuse "$(OldNotRemoved)"
        ${EndIf}
        Delete "$R0\uninstall.exe"
        RMDir "$R0"
    ${EndIf}
FunctionEnd

; By the Explorer, which belongs to the user: started from here the program would be an administrator's, and keep its
; settings where the user's next start does not look.
Function RunAsUser
    Exec '"$WINDIR\explorer.exe" "$INSTDIR\Tarno2.exe"'
FunctionEnd

Function un.onInit
    !insertmacro Everybody
FunctionEnd

Section
    Call RemoveOlder
    !include "${PACKAGES}\install.nsh"
    SetOutPath "$INSTDIR"
    WriteUninstaller "$INSTDIR\uninstall.exe"
    CreateDirectory "$SMPROGRAMS\Tarno2"
    CreateShortCut "$SMPROGRAMS\Tarno2\Tarno2.lnk" "$INSTDIR\Tarno2.exe"
    CreateShortCut "$SMPROGRAMS\Tarno2\$(UninstallName).lnk" "$INSTDIR\uninstall.exe"
    WriteRegStr HKLM "${RECORDING_KEY}" "" "$(RecordingName)"
    WriteRegStr HKLM "${RECORDING_KEY}\DefaultIcon" "" "$INSTDIR\Tarno2.exe,0"
    WriteRegStr HKLM "${RECORDING_KEY}\shell\open\command" "" '"$INSTDIR\Tarno2.exe" --open "%1"'
    WriteRegStr HKLM "${OFFER_KEY}" "Tarno2.Recording" ""
    System::Call 'shell32::SHChangeNotify(i 0x08000000, i 0, p 0, p 0)'
    WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayName" "Tarno2"
    WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
    WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\Tarno2.exe"
    WriteRegStr HKLM "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
    WriteRegStr HKLM "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
    WriteRegStr HKLM "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
    WriteRegDWORD HKLM "${UNINSTALL_KEY}" "NoModify" 1
    WriteRegDWORD HKLM "${UNINSTALL_KEY}" "NoRepair" 1
SectionEnd

; What the installer wrote goes; settings, logs and recordings stay, with the folders that hold them.
Section Uninstall
    !include "${PACKAGES}\uninstall.nsh"
    DeleteRegKey /ifempty HKLM "SOFTWARE\Kestrel Lines LTD\Drivers\1.0"
    DeleteRegKey /ifempty HKLM "SOFTWARE\Kestrel Lines LTD\Drivers"
    DeleteRegKey /ifempty HKLM "SOFTWARE\Kestrel Lines LTD"
    DeleteRegKey HKLM "${RECORDING_KEY}"
    DeleteRegValue HKLM "${OFFER_KEY}" "Tarno2.Recording"
    DeleteRegKey /ifempty HKLM "${OFFER_KEY}"
    System::Call 'shell32::SHChangeNotify(i 0x08000000, i 0, p 0, p 0)'
    DeleteRegKey HKLM "${UNINSTALL_KEY}"
    Delete "$SMPROGRAMS\Tarno2\Tarno2.lnk"
    Delete "$SMPROGRAMS\Tarno2\$(UninstallName).lnk"
    RMDir "$SMPROGRAMS\Tarno2"
    Delete "$INSTDIR\uninstall.exe"
    RMDir "$INSTDIR"
SectionEnd
