// Where the client's report at the end of a process goes.
#pragma once

// Has the report appended to the file instead of written to standard error. Returns an error number if the
// file can't be written, 0 if it can. The path must be absolute and stay valid.
int set_report_file(const char* path);

// From here on, what is written to standard error goes to that file, if one is set. For the end of the
// process, after the program's last output.
void redirect_report();
