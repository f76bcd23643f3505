// Features of the processor that cases need, shared by assembly and C.
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
