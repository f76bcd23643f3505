// Features of the processor that cases need, shared by assembly and C: a number each, and {vector, bit} of AT_HWCAP or
// AT_HWCAP2 by it.
#define feature_base 0
#define feature_flagm 1
#define feature_crc32 2
#define feature_paca 3
#define feature_pacg 4
#define feature_mte 5
#define feature_lrcpc 6
#define feature_ilrcpc 7
#define feature_lse 8
#define feature_jscvt 9
#define FEATURES {0, 0}, {1, 27}, {1, 7}, {1, 30}, {1, 31}, {2, 18}, {1, 15}, {1, 26}, {1, 8}, {1, 13}
