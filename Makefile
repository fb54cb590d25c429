# Everything a person does with this tree. `make help` lists it; `make` alone builds.
#
# Each step first installs the Debian packages it lacks (scripts/packages.sh); with nothing missing
# that takes milliseconds and needs neither network nor rights.

BUILD  := build
PREFIX ?= /usr/local
FUZZ_SECONDS ?= 60
SOAK_SECONDS ?= 600
# Further arguments for the program that `make run` starts.
ARGS ?=

APPDIR  = $(DESTDIR)$(PREFIX)/lib/tandrel
BINDIR  = $(DESTDIR)$(PREFIX)/bin
MANDIR  = $(DESTDIR)$(PREFIX)/share/man/man1
MENUDIR = $(DESTDIR)$(PREFIX)/share/applications
ICONDIR = $(DESTDIR)$(PREFIX)/share/icons/hicolor/scalable/apps

CLANG := -DCMAKE_CXX_COMPILER=clang++-19
# What clang only looks at need not be fast: a type of build without optimisation.
LOOK := $(CLANG) -DCMAKE_BUILD_TYPE=Look

# Tests meet none of the person's own settings, files, display or desktop bus.
PLAIN = env -i PATH="$$PATH" LANG=C.UTF-8 TERM="$${TERM:-dumb}" HOME="$(CURDIR)/$(1)/home"
CTEST = mkdir -p $(1)/home && $(PLAIN) $(2) ctest --test-dir $(1) --output-on-failure -j4

# Targets share build folders.
.NOTPARALLEL:

.PHONY: build run test test-asan test-tsan test-bluetooth check format check-format check-house \
        check-man check-translations translations analyze bench bench-text guard-report fuzz soak \
        stats install uninstall clean help test-receiver

build: ## build both programs into build/bin/
	@scripts/install-packages.sh build
	@scripts/configure.sh $(BUILD)
	@ninja -C $(BUILD) tandrel-app tandrel

run: build ## start the application with the virtual iPhone; Ctrl-C ends it (ARGS="..." is passed on)
	@TANDREL_VIRTUAL_PHONE="$${TANDREL_VIRTUAL_PHONE-1}" exec $(BUILD)/bin/tandrel-app $(ARGS)

test: ## build and run all tests
	@scripts/install-packages.sh build
	@scripts/configure.sh $(BUILD)
	@ninja -C $(BUILD)
	@$(call CTEST,$(BUILD))

test-asan: ## the tests under the address and undefined-behaviour sanitizers
	@scripts/install-packages.sh build
	@scripts/configure.sh build-asan -DTANDREL_SANITIZE=address,undefined
	@ninja -C build-asan
	@$(call CTEST,build-asan,$(shell scripts/sanitizer-options.sh))

test-tsan: ## the tests under the thread sanitizer
	@scripts/install-packages.sh build
	@scripts/configure.sh build-tsan -DTANDREL_SANITIZE=thread
	@ninja -C build-tsan
	@$(call CTEST,build-tsan,$(shell scripts/sanitizer-options.sh))

test-bluetooth: ## our Bluetooth keyboard used by a real host in a virtual machine (minutes; needs root)
	@scripts/install-packages.sh rig
	@scripts/configure.sh $(BUILD)
	@ninja -C $(BUILD) hid_probe
	@tests/rig/test.sh $(BUILD)/bin/hid_probe

test-receiver: build ## the AirPlay receiver from Debian, in a network of its own
	@scripts/install-packages.sh receiver
	@tests/receiver/real_receiver.py $(BUILD)/bin/tandrel-app

check: check-format check-house check-man check-translations analyze test test-asan test-tsan ## everything a change must pass

format: ## bring every source file into the house's form
	@scripts/install-packages.sh check
	@scripts/sources.sh | xargs -0 clang-format-19 -i

check-format:
	@scripts/install-packages.sh check
	@scripts/sources.sh | xargs -0 clang-format-19 --dry-run -Werror

check-house:
	@python3 scripts/house_limits_test.py
	@python3 scripts/house_limits.py

check-translations:
	@scripts/install-packages.sh build
	@scripts/translations.sh --check

check-man:
	@scripts/install-packages.sh check
	@mandoc -T lint -W warning packaging/*.1

analyze: ## clang's thread-safety analysis and clang-tidy over all sources
	@scripts/install-packages.sh check
	@scripts/configure.sh build-clang $(LOOK) -DTANDREL_BENCH=ON
	@ninja -C build-clang
	@scripts/configure.sh build-tidy $(LOOK) -DTANDREL_TIDY=ON -DTANDREL_TESTS=OFF \
	    -DTANDREL_JOIN=ON -DTANDREL_SOURCES_TOGETHER=12
	@ninja -C build-tidy

bench: ## run every benchmark (BENCH=name picks one room's)
	@scripts/install-packages.sh bench
	@scripts/configure.sh build-bench -DTANDREL_BENCH=ON -DTANDREL_TESTS=OFF
	@ninja -C build-bench
	@scripts/bench.sh build-bench/bin "$(BENCH)"

guard-report: build ## how well payments are told from harmless taps (TANDREL_SCREENS as for bench-text)
	@scripts/guard-report.sh $(BUILD)/bin/tandrel-app

bench-text: ## how right and how fast frames are read (TANDREL_SCREENS names real screenshots)
	@scripts/install-packages.sh bench
	@scripts/configure.sh build-bench -DTANDREL_BENCH=ON -DTANDREL_TESTS=OFF
	@ninja -C build-bench text_table look_and_tap
	@scripts/bench-text.sh build-bench/bin --details

fuzz: ## run each fuzz target for FUZZ_SECONDS (60), from its corpus (FUZZ=name picks one)
	@scripts/install-packages.sh check
	@scripts/configure.sh build-fuzz $(CLANG) -DTANDREL_FUZZ=ON -DTANDREL_TESTS=OFF -DTANDREL_JOIN=ON \
	    -DTANDREL_SANITIZE=address,undefined
	@ninja -C build-fuzz fuzz_targets
	@scripts/fuzz.sh build-fuzz "$(FUZZ_SECONDS)" "$(FUZZ)"

soak: ## load four phones for SOAK_SECONDS (600) and watch the memory
	@scripts/install-packages.sh bench
	@scripts/configure.sh build-bench -DTANDREL_BENCH=ON -DTANDREL_TESTS=OFF
	@ninja -C build-bench
	@build-bench/bin/soak --seconds $(SOAK_SECONDS)

translations: ## bring the catalogues in translations/ up to the texts of the windows
	@scripts/install-packages.sh build
	@scripts/translations.sh

stats: ## lines of code and tests, room by room
	@python3 scripts/stats.py

# The windows' font is not copied: it is Debian's fonts-inter, one of the packages of the build.
# A program that runs is replaced, not written into.
install: build ## install below PREFIX (/usr/local): lib/tandrel/, bin/, the menu's entry, man page
	@rm -rf "$(APPDIR)"
	@install -d "$(APPDIR)/bin" "$(BINDIR)" "$(MANDIR)" "$(MENUDIR)" "$(ICONDIR)"
	@install -m 755 $(BUILD)/bin/tandrel-app $(BUILD)/bin/tandrel "$(APPDIR)/bin/"
	@cp -R share "$(APPDIR)/"
	@if [ -d $(BUILD)/share/tandrel/translations ]; then \
	    cp -R $(BUILD)/share/tandrel/translations "$(APPDIR)/share/tandrel/"; fi
	@ln -sfn ../lib/tandrel/bin/tandrel-app "$(BINDIR)/tandrel-app"
	@ln -sfn ../lib/tandrel/bin/tandrel "$(BINDIR)/tandrel"
	@install -m 644 packaging/tandrel-app.1 "$(MANDIR)/"
	@sed 's|@BIN@|$(abspath $(PREFIX))/bin|' packaging/tandrel.desktop >"$(MENUDIR)/tandrel.desktop"
	@chmod 644 "$(MENUDIR)/tandrel.desktop"
	@install -m 644 share/icons/hicolor/scalable/apps/tandrel.svg "$(ICONDIR)/"
	@echo "installed into $(DESTDIR)$(PREFIX); \`make uninstall PREFIX=$(PREFIX)\` removes it"

uninstall: ## remove what `make install` with the same PREFIX put there
	@rm -rf "$(APPDIR)"
	@rm -f "$(BINDIR)/tandrel-app" "$(BINDIR)/tandrel" "$(MANDIR)/tandrel-app.1" \
	    "$(MENUDIR)/tandrel.desktop" "$(ICONDIR)/tandrel.svg"

clean: ## remove every build folder
	@rm -rf $(BUILD) build-asan build-tsan build-clang build-bench build-fuzz

help: ## print this list
	@sed -n 's/^\([a-z-]*\):.*## \(.*\)/\1|\2/p' $(MAKEFILE_LIST) | \
	    while IFS='|' read -r name text; do printf '  make %-14s %s\n' "$$name" "$$text"; done
