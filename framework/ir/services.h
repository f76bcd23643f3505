// Settings and records behind the client's services that the engine looks at.
#pragma once

// dr_log writes messages of this level and below; 0, the default, writes none.
extern unsigned client_log_level;

// What dr_set_client_name was given, or defaults; for the engine's own messages about the client.
const char* client_name();
const char* client_report_url();
