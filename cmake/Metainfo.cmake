# What software centres tell of the program. They load pictures from an address: without one there are none.
#
#   cmake [-D PICTURES_URL=ADDRESS] -D METAINFO=FILE -P cmake/Metainfo.cmake
set(screenshots "")
set(kind " type=\"default\"")
function(add_screenshot name caption russian)
    string(APPEND screenshots "    <screenshot${kind}>\n"
           "      <caption>${caption}</caption>\n      <caption xml:lang=\"ru\">${russian}</caption>\n"
           "      <image>${PICTURES_URL}/en_${name}.png</image>\n"
           "      <image xml:lang=\"ru\">${PICTURES_URL}/ru_${name}.png</image>\n    </screenshot>\n")
    set(screenshots "${screenshots}" PARENT_SCOPE)
    set(kind "" PARENT_SCOPE)
endfunction()
string(REPLACE "&" "&amp;" PICTURES_URL "${PICTURES_URL}")
if(PICTURES_URL)
    add_screenshot(recording "A recording runs" "Идёт запись")
    add_screenshot(opened "A recording, with cursors and spectrum" "Запись с курсорами и спектром")
    add_screenshot(synchronisation "When to record" "Условия синхронизации")
    set(screenshots "  <screenshots>\n${screenshots}  </screenshots>\n")
endif()
configure_file(${CMAKE_CURRENT_LIST_DIR}/../packaging/linux/tarno2.metainfo.xml.in ${METAINFO} @ONLY)
