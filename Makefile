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
# The reference assemblies of that framework: the public surface the sibling modules bind.
FRAMEWORK_REF = $(shell ls -d $(dir $(shell command -v $(DOTNET) | xargs readlink -f))packs/Microsoft.NETCore.App.Ref/*/ref/net* | sort -V | tail -n 1)

# The binding generator, built once, and what it generates: the managed stub classes (cs/),
# the native bindings (cpp/), the model and the report of members left unbound.
WRPGEN       := $(BUILD)/wrpgen/Quorix.WrpGen.dll
GEN_DIR      := $(BUILD)/generated
FOLIO_LIB    := managed/Quorix.Folio/bin/Release/net10.0/Quorix.Folio.dll
BINDTEST_LIB := tests/fixtures/BindingFixture/bin/Release/net10.0/Quorix.BindTest.dll

.PHONY: all deps build generate native managed stage demo test test-cpp test-managed test-python bench clean FORCE

all: build

deps:
	@tools/ensure-deps.sh

build: deps generate stubs native managed stage

generate: callback-slots $(GEN_DIR)/folio/stamp $(GEN_DIR)/bindtest/stamp $(GEN_DIR)/pyintro/stamp $(GEN_DIR)/pygfx/stamp

# The callback tables' slots are listed once; the interop assembly's numbers are emitted from the
# list into a source file kept with the interop code (its fixtures compile that folder alone).
CALLBACK_SLOTS := managed/WrpInterop.Quorix.Folio/Interop/CallbackSlots.cs
.PHONY: callback-slots
callback-slots: $(CALLBACK_SLOTS)

$(CALLBACK_SLOTS): builtins/callback_tables.def $(WRPGEN)
	$(DOTNET) $(WRPGEN) emit-slots $< --out $@

$(WRPGEN): $(wildcard tools/wrpgen/*.cs) tools/wrpgen/Quorix.WrpGen.csproj
	$(DOTNET) build tools/wrpgen/Quorix.WrpGen.csproj $(DOTNET_OPTS) -o $(dir $@)

# dotnet decides whether the assemblies are out of date; an unchanged one keeps its time stamp,
# so the generation below runs only when the assembly or the generator changed.
$(FOLIO_LIB): FORCE
	$(DOTNET) build managed/Quorix.Folio/Quorix.Folio.csproj $(DOTNET_OPTS)

$(BINDTEST_LIB): FORCE
	$(DOTNET) build tests/fixtures/BindingFixture/BindingFixture.csproj $(DOTNET_OPTS)

# generate-bindings <assembly> <root namespace> <python module> <output folder>
define generate-bindings
	@mkdir -p $(4)
	$(DOTNET) $(WRPGEN) model $(1) --root $(2) --module $(3) --ref $(FRAMEWORK_DIR) --out $(4)/model.txt --report $(4)/report.txt
	$(DOTNET) $(WRPGEN) emit-cs $(1) --root $(2) --module $(3) --out $(4)/cs
	$(DOTNET) $(WRPGEN) emit-cpp $(1) --root $(2) --module $(3) --out $(4)/cpp
	@touch $(4)/stamp
endef

$(GEN_DIR)/folio/stamp: $(FOLIO_LIB) $(WRPGEN)
	$(call generate-bindings,$(FOLIO_LIB),Quorix.Folio,quorix.folio,$(GEN_DIR)/folio)

$(GEN_DIR)/bindtest/stamp: $(BINDTEST_LIB) $(WRPGEN)
	$(call generate-bindings,$(BINDTEST_LIB),Quorix.BindTest,qrx_bindtest,$(GEN_DIR)/bindtest)

# The siblings bind a few framework types each and join the runtime only when first used.
# generate-sibling <reference assembly> <root namespace> <python module> <types> <output folder>
define generate-sibling
	@mkdir -p $(5)
	$(DOTNET) $(WRPGEN) model $(1) --root $(2) --module $(3) --types $(4) --ref $(FRAMEWORK_REF) --out $(5)/model.txt --report $(5)/report.txt
	$(DOTNET) $(WRPGEN) emit-cs $(1) --root $(2) --module $(3) --types $(4) --out $(5)/cs
	$(DOTNET) $(WRPGEN) emit-cpp $(1) --root $(2) --module $(3) --types $(4) --out $(5)/cpp \
	    --host-start PySib_StartHost --release PyShWrp_FreeGcHandlePtr
	@touch $(5)/stamp
endef

PYINTRO_TYPES := System.Type,System.Object,System.Enum
PYGFX_TYPES   := System.Drawing.Color,System.Drawing.Point,System.Drawing.PointF,System.Drawing.Size,System.Drawing.SizeF,System.Drawing.Rectangle,System.Drawing.RectangleF

$(GEN_DIR)/pyintro/stamp: $(WRPGEN)
	$(call generate-sibling,$(FRAMEWORK_REF)/System.Runtime.dll,System,quorix.pyintro,$(PYINTRO_TYPES),$(GEN_DIR)/pyintro)

$(GEN_DIR)/pygfx/stamp: $(WRPGEN)
	$(call generate-sibling,$(FRAMEWORK_REF)/System.Drawing.Primitives.dll,System.Drawing,quorix.pygfx,$(PYGFX_TYPES),$(GEN_DIR)/pygfx)

# ---- Type stubs (PEP 561): generated for the bound modules from their metadata and XML
# documentation; the module frame and the hand-written siblings from python/stubs.
STUB_DIR      := $(GEN_DIR)/stubs
STUB_SOURCES  := python/stubs
# every submodule quorix.folio creates: a namespace without bound types still gets its stub
comma := ,
space := $(subst ,, )
FOLIO_MODULES := $(subst $(space),$(comma),$(strip $(addprefix quorix.folio.,ai bibliography buildingblocks \
    comparing digitalsignatures drawing drawing.charts drawing.ole fields fonts framesets layout lists loading \
    lowcode mailmerging markup math notes properties rendering replacing reporting saving settings shaping tables \
    themes vba webextensions xattr _wrpgen _wrpgen._interop _wrpgen._generic)))

# the reference pack's documentation of an assembly, where the pack carries it
doc-of = $(if $(wildcard $(FRAMEWORK_REF)/$(1).xml),--doc $(FRAMEWORK_REF)/$(1).xml)

.PHONY: stubs
stubs: $(STUB_DIR)/stamp

$(STUB_DIR)/stamp: $(GEN_DIR)/folio/stamp $(GEN_DIR)/pyintro/stamp $(GEN_DIR)/pygfx/stamp $(wildcard $(STUB_SOURCES)/*.pyi)
	@rm -rf $(STUB_DIR) && mkdir -p $(STUB_DIR)/quorix
	$(DOTNET) $(WRPGEN) emit-pyi $(FOLIO_LIB) --root Quorix.Folio --module quorix.folio --modules $(FOLIO_MODULES) \
	    --doc $(FOLIO_LIB:.dll=.xml) --undocumented $(STUB_DIR)/undocumented.txt \
	    --prelude $(STUB_SOURCES)/frame.pyi --prelude $(STUB_SOURCES)/folio.pyi --out $(STUB_DIR)
	$(DOTNET) $(WRPGEN) emit-pyi $(FRAMEWORK_REF)/System.Runtime.dll --root System --module quorix.pyintro \
	    --types $(PYINTRO_TYPES) $(call doc-of,System.Runtime) --prelude $(STUB_SOURCES)/frame.pyi --out $(STUB_DIR)
	$(DOTNET) $(WRPGEN) emit-pyi $(FRAMEWORK_REF)/System.Drawing.Primitives.dll --root System.Drawing --module quorix.pygfx \
	    --types $(PYGFX_TYPES) $(call doc-of,System.Drawing.Primitives) --prelude $(STUB_SOURCES)/frame.pyi --out $(STUB_DIR)
	@for m in pyhold pyfund; do cat $(STUB_SOURCES)/frame.pyi $(STUB_SOURCES)/$$m.pyi > $(STUB_DIR)/quorix/$$m.pyi; done
	@touch $(STUB_DIR)/quorix/py.typed $@

native:
	cmake -S . -B $(CMAKE_DIR) -DCMAKE_BUILD_TYPE=Release -DPython3_EXECUTABLE=$(PYTHON) \
	    -DQRX_PACKAGE_DIR=$(abspath $(PKG_DIR)) -DQRX_NETCORE_NAME=$(NETCORE_NAME) >/dev/null
	cmake --build $(CMAKE_DIR) -j $(JOBS)

managed: generate
	$(DOTNET) build managed/WrpInterop.Quorix.Folio/WrpInterop.Quorix.Folio.csproj $(DOTNET_OPTS) \
	    -p:QrxGeneratedDir=$(abspath $(GEN_DIR)/folio/cs) -o $(PKG_DIR)/assemblies/folio
	$(DOTNET) build managed/WrpInterop.Quorix.PyIntro/WrpInterop.Quorix.PyIntro.csproj $(DOTNET_OPTS) \
	    -p:QrxGeneratedDir=$(abspath $(GEN_DIR)/pyintro/cs) -o $(PKG_DIR)/assemblies/pyintro
	$(DOTNET) build managed/WrpInterop.Quorix.PyGfx/WrpInterop.Quorix.PyGfx.csproj $(DOTNET_OPTS) \
	    -p:QrxGeneratedDir=$(abspath $(GEN_DIR)/pygfx/cs) -o $(PKG_DIR)/assemblies/pygfx
	$(DOTNET) build tests/fixtures/BindTestInterop/BindTestInterop.csproj $(DOTNET_OPTS) \
	    -p:QrxGeneratedDir=$(abspath $(GEN_DIR)/bindtest/cs) -o $(BUILD)/fixtures/bindtest

# Runtime folder: our wrapper library beside the shared framework's own files (linked).
stage:
	@tools/stage-runtime.sh "$(FRAMEWORK_DIR)" "$(PKG_DIR)/runtime/$(NETCORE_NAME)"
	@cp python/quorix/__init__.py $(PKG_DIR)/__init__.py
	@mkdir -p $(PKG_DIR)/folio && cp python/quorix/folio/*.py $(PKG_DIR)/folio/
	@# The host loads native libraries from beside the assemblies: Skia and HarfBuzz for this
	@# platform go there, and the other platforms' copies are dropped.
	@if [ -d $(PKG_DIR)/assemblies/folio/runtimes/linux-x64/native ]; then \
	    cp $(PKG_DIR)/assemblies/folio/runtimes/linux-x64/native/*.so $(PKG_DIR)/assemblies/folio/; \
	    rm -rf $(PKG_DIR)/assemblies/folio/runtimes; fi
	@rsync -a --delete python/quorix/__pyinstaller/ $(PKG_DIR)/__pyinstaller/
	@for p in folio pyintro pygfx pyhold pyfund; do \
	    mkdir -p $(PKG_DIR)/$$p; rsync -a --delete python/quorix/$$p/__pyinstaller/ $(PKG_DIR)/$$p/__pyinstaller/; done
	@rsync -a $(STUB_DIR)/quorix/ $(PKG_DIR)/

demo: build
	PYTHONPATH=$(BUILD)/python $(PYTHON) demo/demo.py

test: build test-cpp test-managed test-python test-wheel

test-cpp:
	cd $(CMAKE_DIR) && ctest --output-on-failure -j $(JOBS)

test-managed:
	$(DOTNET) test tests/generator/WrpGen.Tests/WrpGen.Tests.csproj $(DOTNET_OPTS)
	$(DOTNET) test managed/WrpInterop.Quorix.Folio.Tests/WrpInterop.Quorix.Folio.Tests.csproj $(DOTNET_OPTS)
	@if [ -f managed/Quorix.Folio.Tests/Quorix.Folio.Tests.csproj ]; then \
	    $(DOTNET) test managed/Quorix.Folio.Tests/Quorix.Folio.Tests.csproj $(DOTNET_OPTS); fi

test-python:
	$(DOTNET) build tests/fixtures/IncompleteInterop/IncompleteInterop.csproj $(DOTNET_OPTS) \
	    -o $(BUILD)/fixtures/incomplete-interop
	$(DOTNET) build tests/fixtures/HostFixture/HostFixture.csproj $(DOTNET_OPTS) -o $(BUILD)/fixtures/host-fixture
	tools/break-generic-stubs.sh $(GEN_DIR)/folio/cs $(BUILD)/fixtures/broken-generic-src
	$(DOTNET) build tests/fixtures/BrokenGenericInterop/BrokenGenericInterop.csproj $(DOTNET_OPTS) \
	    -p:QrxGeneratedDir=$(abspath $(BUILD)/fixtures/broken-generic-src) -o $(BUILD)/fixtures/broken-generic
	QRX_BUILD_DIR=$(abspath $(BUILD)) PYTHONPATH=$(BUILD)/python $(PYTHON) -m pytest -q tests/python

bench: build wheel
	PYTHONPATH=$(BUILD)/python $(PYTHON) bench/call_overhead.py --wheel-root $(WHEEL_STAGE)

# ---- Wheel: the assembled package with the shared framework's files copied in (not linked) and
# our assemblies precompiled (ReadyToRun) by the compiler of the framework's own version.
WHEEL_VERSION   := 26.10.0.0
DIST_DIR        := dist
WHEEL_STAGE     := $(BUILD)/wheel
NETCORE_VERSION = $(notdir $(FRAMEWORK_DIR))
CROSSGEN_PROJ   := tools/crossgen/Crossgen2.csproj

.PHONY: wheel test-wheel
wheel: build
	$(DOTNET) restore $(CROSSGEN_PROJ) -p:Crossgen2Version=$(NETCORE_VERSION) -nologo -v:q
	$(PYTHON) tools/build-wheel.py --package $(PKG_DIR) --framework $(FRAMEWORK_DIR) --stage $(WHEEL_STAGE) \
	    --crossgen "$$($(DOTNET) msbuild $(CROSSGEN_PROJ) -getProperty:NuGetPackageRoot -p:Crossgen2Version=$(NETCORE_VERSION))microsoft.netcore.app.crossgen2.linux-x64/$(NETCORE_VERSION)/tools/crossgen2" \
	    --dist $(DIST_DIR) --version $(WHEEL_VERSION) --readme README.md

# Installs the wheel into a fresh virtual environment and uses it with the SDK out of sight.
test-wheel: wheel
	QRX_WHEEL_DIR=$(abspath $(DIST_DIR)) QRX_DOTNET_ROOT=$(abspath $(dir $(FRAMEWORK_DIR))../..) \
	    $(PYTHON) -m pytest -q tests/wheel

clean:
	rm -rf $(BUILD) $(DIST_DIR)
