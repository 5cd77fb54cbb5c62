# The Debian package. make-deb calls CPack; the libraries it needs are found by dpkg-shlibdeps, what is loaded at run
# time by name is listed here.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME larkspire)
set(CPACK_PACKAGE_VENDOR Fernhollow)
set(CPACK_PACKAGE_CONTACT "Fernhollow <packages@larkspire.example>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION net)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE https://www.larkspire.example/)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "monitor of real-time news of the Chinese A-share market")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Larkspire (云雀资讯) stays open beside a trading program all day. It polls a
news service, shows the items in a table with details, marks those that match
the user's keywords, and announces them by speech, sound, popup and tray icon.
It shows figures of the whole market, and a stock page that follows the stock
that is open in the trading program.

Its interface is in Chinese. An account of a news service is needed.")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# Every text of the program is Chinese: without a Chinese face it would be nothing but boxes.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "fonts-noto-cjk | fonts-wqy-microhei | fonts-wqy-zenhei")
# Without these it runs, but does less: emoji in their face, speech with a Chinese voice, links that open in the browser.
# The platform plug-in for X11 and the reader of the icons come with libqt5gui5; sound goes to
# PulseAudio, or what stands in for it, by libraries that shlibdeps sees.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS
  "fonts-noto-color-emoji, qtspeech5-speechd-plugin | qtspeech5-flite-plugin, \
speech-dispatcher, speech-dispatcher-espeak-ng, pulseaudio | pipewire-pulse, xdg-utils")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "fcitx5-frontend-qt5, qtwayland5, wine")

set(CPACK_PRE_BUILD_SCRIPTS "${CMAKE_CURRENT_SOURCE_DIR}/deb-documents.cmake")
set(CPACK_LARKSPIRE_METAINFO "${CMAKE_CURRENT_SOURCE_DIR}/${app_id}.metainfo.xml")
include(CPack)
