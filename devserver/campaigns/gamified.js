(() => {
  const prizes = ["5 %", "€ 10", "8 %", "Post 0", "12 %", "€ 5", "15 %", "A gift"];
  const colours = ["#ff5c7a", "#ffcf4a", "#36c9b4", "#7d5cff", "#ff8f4a", "#f5f0ff", "#3aa0ff", "#c95cff"];
  const step = 360 / prizes.length;
  const at = (degrees, r) => {
    const angle = ((degrees - 90) * Math.PI) / 180;
    return `${(200 + r * Math.cos(angle)).toFixed(2)} ${(200 + r * Math.sin(angle)).toFixed(2)}`;
  };
  const dark = (i) => i === 1 || i === 5;
  document.getElementById("wheel").innerHTML =
    `<circle cx="200" cy="200" r="192" fill="#fff"/>` +
    prizes.map((prize, i) => {
      const from = i * step - step / 2;
      return `<path d="M200 200 L${at(from, 180)} A180 180 0 0 1 ${at(from + step, 180)}z" fill="${colours[i]}"/>` +
        `<text transform="rotate(${i * step} 200 200)" x="200" y="66" text-anchor="middle" font-size="23" font-weight="750" fill="${dark(i) ? "#2a1b52" : "#fff"}">${prize}</text>`;
    }).join("") +
    prizes.map((_, i) => `<circle cx="${at(i * step - step / 2, 186).split(" ")[0]}" cy="${at(i * step - step / 2, 186).split(" ")[1]}" r="4.5" fill="#ffcf4a"/>`).join("");
  const game = document.getElementById("game");
  document.getElementById("spin").addEventListener("click", (event) => {
    event.target.disabled = true;
    const won = Math.floor(Math.random() * prizes.length);
    document.getElementById("wheel").style.transform = `rotate(${360 * 6 - won * step}deg)`;
    setTimeout(() => {
      game.classList.add("won");
      document.getElementById("headline").textContent = `${prizes[won]} is yours!`;
      document.getElementById("line").textContent = "Today only, on everything that is in your basket.";
      document.getElementById("prize").textContent = "WHEEL-" + (4096 + won * 577).toString(36).toUpperCase();
      for (let i = 0; i < 60; i += 1) {
        const bit = document.createElement("i");
        bit.className = "bit";
        bit.style.cssText = `left:${Math.random() * 100}%;background:${colours[i % 8]};animation-delay:${Math.random()}s`;
        bit.addEventListener("animationend", () => bit.remove());
        game.append(bit);
      }
    }, 4300);
  });
})();
