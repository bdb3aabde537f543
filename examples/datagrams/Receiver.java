// Prints the objects that a program logs with a LocalUDPAppender, by nothing but Java's own object streams.
//
//   java Receiver.java <port> [<how many>]     port 0 is any free one; it says which

import java.io.ByteArrayInputStream;
import java.io.Externalizable;
import java.io.IOException;
import java.io.ObjectInput;
import java.io.ObjectInputStream;
import java.io.ObjectOutput;
import java.io.PrintStream;
import java.net.DatagramPacket;
import java.net.DatagramSocket;
import java.net.InetAddress;

public class Receiver {
  public static void main(String[] arguments) throws Exception {
    int count = arguments.length > 1 ? Integer.parseInt(arguments[1]) : Integer.MAX_VALUE;
    PrintStream out = new PrintStream(System.out, true, "UTF-8");
    try (DatagramSocket socket =
             new DatagramSocket(Integer.parseInt(arguments[0]), InetAddress.getByName("127.0.0.1"))) {
      out.println("listening on " + socket.getLocalPort());
      DatagramPacket packet = new DatagramPacket(new byte[65536], 65536);
      while (count-- > 0) {
        packet.setLength(65536);
        socket.receive(packet);
        out.println(read(new ByteArrayInputStream(packet.getData(), 0, packet.getLength())));
      }
    }
  }

  private static String read(ByteArrayInputStream datagram) {
    try (ObjectInputStream in = new ObjectInputStream(datagram)) {
      String logger = in.readUTF();
      Object message = in.readObject();
      return logger + ": " + message + (in.read() < 0 ? "" : " and more");
    } catch (IOException | ClassNotFoundException | RuntimeException error) {
      return error.toString();
    }
  }
}

class Sale implements Externalizable {
  private static final long serialVersionUID = 1;

  private String article;
  private int quantity;
  private long cents;

  public Sale() {}

  @Override
  public void readExternal(ObjectInput in) throws IOException {
    StringBuilder text = new StringBuilder();
    for (int left = in.readInt(); left > 0; left--) text.append(in.readChar());
    article = text.toString();
    quantity = in.readInt();
    cents = in.readLong();
  }

  @Override
  public void writeExternal(ObjectOutput out) {
    throw new UnsupportedOperationException();
  }

  @Override
  public String toString() {
    return quantity + " x " + article + " for " + cents + " cents";
  }
}
