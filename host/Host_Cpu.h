// Hot loops that gain from newer instruction sets (AVX2, BMI, shorter
// truncation) are compiled twice where the toolchain can choose between the
// versions when the program loads: a version for x86-64-v3 processors and the
// baseline one. Results are identical: the build never contracts floating
// point arithmetic into fused multiply-adds, whatever the instruction set.
#pragma once

#if PELLUCIDA_HAVE_TARGET_CLONES
#define HOST_HOT_LOOP __attribute__((target_clones("arch=x86-64-v3", "default")))
#else
#define HOST_HOT_LOOP
#endif
