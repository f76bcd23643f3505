# Short names for what is done with CMake and ctest. Every command first installs what it lacks (Debian and Ubuntu).

PREFIX ?= /usr/local

# An AArch64 machine builds for itself. Another one cross-compiles, and has a second tree with the emulation core built
# for the machine itself, with sanitizers.
ifeq ($(shell uname -m),aarch64)
AARCH64 := aarch64-native
TREES := aarch64-native
MISSING_OPCODES := build/aarch64/bin/missing_opcodes
else
AARCH64 := aarch64
EMULATOR := G_SLICE=always-malloc qemu-aarch64 -cpu max,sve=off
TREES := aarch64 host
MISSING_OPCODES := build/host/bin/missing_opcodes
endif

export CTEST_PARALLEL_LEVEL ?= $(shell nproc)

.PHONY: help demo test test-programs test-kernel soak conformance bench format missing install clean
.NOTPARALLEL:

help:
	@echo 'make demo             build, and run the example programs without SVE'
	@echo 'make test             build all, check the format and run all tests'
	@echo 'make test-kernel      run programs of the tests in a virtual machine with its own kernel, and compare'
	@echo 'make soak             threads, signals, processes and changing code for MINUTES=5, and whether memory grows'
	@echo 'make conformance      compare every opcode with a processor (SEED= ITERATIONS= FILTER= DEPTH=)'
	@echo 'make test-programs    run programs of Debian packages directly and under ostrel, and compare (PROGRAM=)'
	@echo 'make bench            what emulated instructions and floating-point kernels cost'
	@echo 'make missing          list the opcodes that are not carried yet'
	@echo 'make format           format the sources (clang-format 14)'
	@echo 'make install PREFIX=  install ostrel, by default below /usr/local'
	@echo 'make clean            remove the build trees'

demo: configure-$(AARCH64)
	cmake --build --preset $(AARCH64) --target demo

test: check-format $(TREES:%=test-%)

# Downloads some 220 MB of packages once, and takes a quarter of an hour. PROGRAM= is a pattern of the cases' names.
test-programs: configure-$(AARCH64)
	cmake --build --preset $(AARCH64) --target ostrel
	tests/real_programs/run.sh build/aarch64 all $(if $(PROGRAM),'$(PROGRAM)')

# What user-mode emulation does for the kernel in its own way, in a machine that boots one. Downloads some 40 MB once.
test-kernel: configure-$(AARCH64)
	cmake/install-dependencies.sh kernel
	cmake --build --preset $(AARCH64) --target ostrel engine_tests
	tests/kernel/run.sh build/aarch64

# Threads, signals, processes and mappings mixed, with a look at the memory.
MINUTES ?= 5
soak: configure-$(AARCH64)
	cmake --build --preset $(AARCH64) --target ostrel soak
	$(EMULATOR) build/aarch64/bin/ostrel build/aarch64/bin/soak $$(($(MINUTES) * 60))

bench: configure-$(AARCH64)
	cmake/install-dependencies.sh bench
	cmake --preset $(AARCH64) -DOSTREL_BENCHMARKS=ON
	cmake --build --preset $(AARCH64) --target stub_cost_table
	cmake --build --preset $(AARCH64) --target path_cost_table
	cmake --build --preset $(AARCH64) --target engine_cost_table
	cmake --preset bench
	cmake --build --preset bench --target fp_kernels stub_times
	build/bench/bin/stub_times
	build/bench/bin/fp_kernels

# What every opcode does, against a processor with 1024-bit SVE: SEED=, ITERATIONS= (states for each opcode), FILTER=.
# With DEPTH=, the floating-point kernels as well, DEPTH thousand random operands for each operation.
ITERATIONS ?= 1000
conformance: configure-$(AARCH64)
	cmake --build --preset $(AARCH64) --target conformance
	sh tests/conformance/run.sh build/aarch64/bin/conformance --iterations $(ITERATIONS) $(if $(SEED),--seed $(SEED)) \
		$(if $(FILTER),--filter '$(FILTER)')
ifdef DEPTH
	cmake --build --preset $(AARCH64) --target fp_hardware
	sh tests/conformance/run.sh build/aarch64/bin/fp_hardware $(DEPTH) $(SEED)
endif

missing: configure-$(lastword $(TREES))
	cmake --build --preset $(lastword $(TREES)) --target missing_opcodes
	$(MISSING_OPCODES)

install: configure-$(AARCH64)
	cmake --build --preset $(AARCH64) --target ostrel
	cmake --install build/aarch64 --prefix '$(PREFIX)'

format:
	cmake/format.sh

clean:
	rm -rf build

.PHONY: check-format $(TREES:%=configure-%) $(TREES:%=test-%)

check-format:
	cmake/format.sh --check

$(TREES:%=configure-%): configure-%:
	cmake/install-dependencies.sh $(if $(findstring aarch64,$*),aarch64,host)
	cmake --preset $*

$(TREES:%=test-%): test-%: configure-%
	cmake --build --preset $*
	ctest --preset $*
