; The installer. scripts/package-windows.sh makes the lists of files and registry entries and calls makensis.
Target amd64-unicode
Unicode true
!include MUI2.nsh

Name "Tarno2"
OutFile "${PACKAGES}\${NAME}-setup.exe"
InstallDir "$PROGRAMFILES64\Tarno2"
InstallDirRegKey HKLM "Software\Microsoft\Windows\CurrentVersion\Uninstall\Tarno2" "InstallLocation"
RequestExecutionLevel admin
SetCompressor /SOLID lzma
ManifestDPIAware true

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
!define MUI_FINISHPAGE_RUN "$INSTDIR\Tarno2.exe"
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"
!insertmacro MUI_LANGUAGE "Russian"

LangString UninstallName ${LANG_ENGLISH} "Uninstall Tarno2"
LangString UninstallName ${LANG_RUSSIAN} "Удалить Tarno2"

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

Function .onInit
    !insertmacro Everybody
FunctionEnd

Function un.onInit
    !insertmacro Everybody
FunctionEnd

Section
    !include "${PACKAGES}\install.nsh"
    SetOutPath "$INSTDIR"
    WriteUninstaller "$INSTDIR\uninstall.exe"
    CreateDirectory "$SMPROGRAMS\Tarno2"
    CreateShortCut "$SMPROGRAMS\Tarno2\Tarno2.lnk" "$INSTDIR\Tarno2.exe"
    CreateShortCut "$SMPROGRAMS\Tarno2\$(UninstallName).lnk" "$INSTDIR\uninstall.exe"
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
    DeleteRegKey HKLM "${UNINSTALL_KEY}"
    Delete "$SMPROGRAMS\Tarno2\Tarno2.lnk"
    Delete "$SMPROGRAMS\Tarno2\$(UninstallName).lnk"
    RMDir "$SMPROGRAMS\Tarno2"
    Delete "$INSTDIR\uninstall.exe"
    RMDir "$INSTDIR"
SectionEnd
