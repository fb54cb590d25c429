find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)
find_package(fmt REQUIRED)
find_package(nlohmann_json REQUIRED)
find_path(TOMLPLUSPLUS toml++/toml.h REQUIRED)  # headers only
find_package(ICU REQUIRED COMPONENTS uc i18n)

# Each library that only one room needs is looked up here all the same, so that a missing package
# is named at configure time and not at the first include.
pkg_check_modules(PNG REQUIRED IMPORTED_TARGET libpng)
pkg_check_modules(TURBOJPEG REQUIRED IMPORTED_TARGET libturbojpeg)
pkg_check_modules(ISAL REQUIRED IMPORTED_TARGET libisal)
pkg_check_modules(TESSERACT REQUIRED IMPORTED_TARGET tesseract lept)
pkg_check_modules(PANGOCAIRO REQUIRED IMPORTED_TARGET pangocairo)
pkg_check_modules(SDBUSCPP REQUIRED IMPORTED_TARGET sdbus-c++)
pkg_check_modules(UDEV REQUIRED IMPORTED_TARGET libudev)
pkg_check_modules(CANBERRA REQUIRED IMPORTED_TARGET libcanberra)
pkg_check_modules(XCB REQUIRED IMPORTED_TARGET
    xcb xcb-composite xcb-damage xcb-shm xcb-res xcb-xtest)
find_path(LIBYUV_INCLUDE libyuv.h REQUIRED)
find_library(LIBYUV yuv REQUIRED)
find_package(Qt6 REQUIRED COMPONENTS Core Gui Widgets)
if(TANDREL_TESTS)
    find_package(GTest REQUIRED)
    pkg_check_modules(UMOCKDEV REQUIRED IMPORTED_TARGET umockdev-1.0)
endif()
