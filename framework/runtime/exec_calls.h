// Programs that the application executes in its place.
#pragma once

// Frees what the thread's last execve was made of. After a success nobody is left to do so but the parent
// whose memory a child has shared.
void release_exec_command();
