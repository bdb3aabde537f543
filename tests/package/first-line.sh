apt install ./tovlog4vrk1_*.deb ./log4vrk-dev_*.deb ./log4vrk-tools_*.deb   # as root
cp /usr/share/doc/log4vrk-dev/examples/hello.* .
g++ hello.cpp -o hello -l:tovlog4vrk.so
./hello
