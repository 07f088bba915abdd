# The Debian package: `cpack -G DEB` in the build folder makes
# wavelark_<version>_<architecture>.deb from the install rules.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME wavelark)
set(CPACK_PACKAGE_VENDOR Marlo)
set(CPACK_PACKAGE_CONTACT Marlo)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "sound-card signal generator and test instrument")
string(JOIN "\n" CPACK_PACKAGE_DESCRIPTION
    "Wavelark turns a PC's sound card into a test instrument for people who test"
    "amplifiers, speakers and audio circuits: sine, triangle, mark/space and noise"
    "at one frequency, in stepped sweeps or as tone bursts, changed while they"
    "play without a gap; the time response of a burst, the card's mixer levels,"
    "and an output calibrated in volts.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE https://github.com/marlo/wavelark)
# The libraries the program links (Qt, ALSA) come from dpkg-shlibdeps; Qt's
# X11 platform plugin ships in libqt6gui6 with them. Sound on a desktop goes
# through ALSA's default device to the sound server, which needs ALSA's
# PulseAudio plugin or PipeWire's own. Input methods and native Wayland
# windows are wanted on a desktop but not needed to run.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libasound2-plugins | pipewire-alsa")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "qt6-qpa-plugins, qt6-wayland")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "qt6-gtk-platformtheme, xvfb")

include(CPack)
