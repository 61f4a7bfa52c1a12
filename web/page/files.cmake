# The files of the page, embedded in the program as the resource :/page. A new file of the page is added to
# this list; files of the distribution are named below it with the name that the page uses.

set(page_files
    app.js
    icon.svg
    index.html
    lib/api.js
    lib/dom.js
    lib/format.js
    lib/levels.js
    lib/preferences.js
    lib/reasons.js
    lib/router.js
    lib/scan_progress.js
    lib/store.js
    lib/stream.js
    lib/time_window.js
    style/controls.css
    style/drive.css
    style/layout.css
    style/overview.css
    style/theme.css
    style/widgets.css
    style/widths.css
    views/attribute_panel.js
    views/drive.js
    views/drive_list.js
    views/drive_parts.js
    views/events.js
    views/findings.js
    views/former.js
    views/login.js
    views/overview.js
    views/scan_panel.js
    views/schedule_panel.js
    views/service.js
    views/settings_panel.js
    views/temperature_panel.js
    widgets/age.js
    widgets/badge.js
    widgets/bar.js
    widgets/dialog.js
    widgets/fields.js
    widgets/notice.js
    widgets/panel.js
    widgets/sparkline.js
    widgets/surface_map.js
    widgets/table.js
    widgets/temperature_chart.js
)
find_file(DYGRAPHS_SCRIPT dygraph.min.js PATHS /usr/share/javascript/dygraphs NO_CMAKE_FIND_ROOT_PATH REQUIRED)
find_file(DYGRAPHS_STYLE dygraph.min.css PATHS /usr/share/javascript/dygraphs NO_CMAKE_FIND_ROOT_PATH REQUIRED)

set(entries "")
foreach(file ${page_files})
    string(APPEND entries "<file alias=\"${file}\">${CMAKE_CURRENT_LIST_DIR}/${file}</file>\n")
endforeach()
string(APPEND entries "<file alias=\"vendor/dygraph.js\">${DYGRAPHS_SCRIPT}</file>\n")
string(APPEND entries "<file alias=\"vendor/dygraph.css\">${DYGRAPHS_STYLE}</file>\n")
file(CONFIGURE OUTPUT page.qrc @ONLY
    CONTENT "<RCC><qresource prefix=\"/page\">\n@entries@</qresource></RCC>\n")
# Not compressed: the server sends the bytes from where they are.
qt5_add_resources(halvex_page_resource ${CMAKE_CURRENT_BINARY_DIR}/page.qrc OPTIONS -no-compress)
set_source_files_properties(${halvex_page_resource} PROPERTIES SKIP_AUTOMOC ON)
