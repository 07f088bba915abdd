# The program's place on a Linux desktop: the icon in the sizes the icon theme
# and the window use, the desktop entry, the AppStream metainfo, the man page
# and the licence, with their install rules. Included from app/, whose
# program compiles the icon in.
include(GNUInstallDirs)

set(WAVELARK_APP_ID io.github.marlo.Wavelark)
set(desktop_data ${PROJECT_SOURCE_DIR}/data)
set(icon_svg ${desktop_data}/${WAVELARK_APP_ID}.svg)

# The PNGs are rendered from the SVG at build time, so that the one drawing
# is the only source and the sizes can never drift from it.
find_program(RSVG_CONVERT rsvg-convert REQUIRED)
set(WAVELARK_ICON_FOLDER ${CMAKE_CURRENT_BINARY_DIR}/icons)
set(WAVELARK_ICON_PNGS)
foreach(size 48 256)
  set(png ${WAVELARK_ICON_FOLDER}/${size}/${WAVELARK_APP_ID}.png)
  add_custom_command(OUTPUT ${png}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${WAVELARK_ICON_FOLDER}/${size}
    COMMAND ${RSVG_CONVERT} --width=${size} --height=${size} --output=${png} ${icon_svg}
    DEPENDS ${icon_svg}
    COMMENT "Rendering the ${size} px icon"
    VERBATIM)
  list(APPEND WAVELARK_ICON_PNGS ${png})
  install(FILES ${png} DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/${size}x${size}/apps)
endforeach()

# The man page carries the project's version; installed compressed, as man
# pages are on Debian.
set(man_page ${CMAKE_CURRENT_BINARY_DIR}/wavelark.1)
configure_file(${desktop_data}/wavelark.1.in ${man_page} @ONLY)
add_custom_command(OUTPUT ${man_page}.gz
  COMMAND gzip -9 -n -f -k ${man_page}
  DEPENDS ${man_page}
  VERBATIM)

add_custom_target(wavelark_desktop_files ALL DEPENDS ${WAVELARK_ICON_PNGS} ${man_page}.gz)

install(FILES ${icon_svg} DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
install(FILES ${desktop_data}/${WAVELARK_APP_ID}.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${desktop_data}/${WAVELARK_APP_ID}.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES ${man_page}.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE ${desktop_data}/copyright
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/wavelark)
