# Top-level driver: installs what a fresh machine lacks, builds the native and managed
# parts, assembles build/python as an importable root, and runs the demo or the tests.
PYTHON      ?= /usr/bin/python3
BUILD       := build
CMAKE_DIR   := $(BUILD)/cmake
PKG_DIR     := $(BUILD)/python/quorix
JOBS        := 2
DOTNET      := dotnet
DOTNET_OPTS := -c Release -nologo -v:q -m:$(JOBS)
export DOTNET_CLI_TELEMETRY_OPTOUT := 1
export DOTNET_NOLOGO := 1
export DOTNET_SKIP_FIRST_TIME_EXPERIENCE := 1

# The .NET shared framework we host: the newest Microsoft.NETCore.App the SDK carries.
FRAMEWORK_DIR = $(shell tools/find-framework.sh dir)
NETCORE_NAME  = $(shell tools/find-framework.sh name)

.PHONY: all deps build native managed stage demo test test-cpp test-managed test-python bench clean

all: build

deps:
	@tools/ensure-deps.sh

build: deps native managed stage

native:
	cmake -S . -B $(CMAKE_DIR) -DCMAKE_BUILD_TYPE=Release -DPython3_EXECUTABLE=$(PYTHON) \
	    -DQRX_PACKAGE_DIR=$(abspath $(PKG_DIR)) -DQRX_NETCORE_NAME=$(NETCORE_NAME) >/dev/null
	cmake --build $(CMAKE_DIR) -j $(JOBS)

managed:
	$(DOTNET) build managed/WrpInterop.Quorix.Folio/WrpInterop.Quorix.Folio.csproj $(DOTNET_OPTS) \
	    -o $(PKG_DIR)/assemblies/folio

# Runtime folder: our wrapper library beside the shared framework's own files (linked).
stage:
	@tools/stage-runtime.sh "$(FRAMEWORK_DIR)" "$(PKG_DIR)/runtime/$(NETCORE_NAME)"
	@cp python/quorix/__init__.py $(PKG_DIR)/__init__.py
	@rsync -a --delete python/quorix/__pyinstaller/ $(PKG_DIR)/__pyinstaller/
	@for p in folio pyintro pygfx pyhold pyfund; do \
	    mkdir -p $(PKG_DIR)/$$p; rsync -a --delete python/quorix/$$p/__pyinstaller/ $(PKG_DIR)/$$p/__pyinstaller/; done

demo: build
	PYTHONPATH=$(BUILD)/python $(PYTHON) demo/demo.py

test: build test-cpp test-managed test-python

test-cpp:
	cd $(CMAKE_DIR) && ctest --output-on-failure -j $(JOBS)

test-managed:
	$(DOTNET) test managed/WrpInterop.Quorix.Folio.Tests/WrpInterop.Quorix.Folio.Tests.csproj $(DOTNET_OPTS)
	@if [ -f managed/Quorix.Folio.Tests/Quorix.Folio.Tests.csproj ]; then \
	    $(DOTNET) test managed/Quorix.Folio.Tests/Quorix.Folio.Tests.csproj $(DOTNET_OPTS); fi

test-python:
	$(DOTNET) build tests/fixtures/IncompleteInterop/IncompleteInterop.csproj $(DOTNET_OPTS) \
	    -o $(BUILD)/fixtures/incomplete-interop
	$(DOTNET) build tests/fixtures/HostFixture/HostFixture.csproj $(DOTNET_OPTS) -o $(BUILD)/fixtures/host-fixture
	QRX_BUILD_DIR=$(abspath $(BUILD)) PYTHONPATH=$(BUILD)/python $(PYTHON) -m pytest -q tests/python

bench: build
	PYTHONPATH=$(BUILD)/python $(PYTHON) bench/call_overhead.py

clean:
	rm -rf $(BUILD)
