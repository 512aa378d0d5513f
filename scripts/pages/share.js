// Shares the screen on the first click, stops on the next, and tells the server once a second what arrives: the number
// of frames, and the colour in one place of the picture. The page has a <video>; its address may name the place as
// "#0.5,0.5", in parts of the picture's width and height.
const say = text => fetch("/log", {method: "POST", body: text});
const video = document.querySelector("video");
const size = {width: 64, height: 40};
const canvas = Object.assign(document.createElement("canvas"), size).getContext("2d", {willReadFrequently: true});
const [across, down] = (location.hash.slice(1) || "0.5,0.5").split(",").map(Number);
let track;
let frames = 0;

function tell() {
  canvas.drawImage(video, 0, 0, size.width, size.height);
  const [red, green, blue] = canvas.getImageData(across * size.width, down * size.height, 1, 1).data;
  say(`frames ${frames} ${video.videoWidth}x${video.videoHeight} ${red} ${green} ${blue} ${track.readyState}`);
}

function count() {
  ++frames;
  video.requestVideoFrameCallback ? video.requestVideoFrameCallback(count) : requestAnimationFrame(count);
}

async function share() {
  try {
    const stream = await navigator.mediaDevices.getDisplayMedia(
        {video: {displaySurface: "monitor", frameRate: 10}, audio: false});
    track = stream.getVideoTracks()[0];
    video.srcObject = stream;
    await video.play();
    document.body.classList.add("sharing");
    count();
    say("sharing");
    setInterval(tell, 1000);
  } catch (error) {
    say(`error ${error.name} ${error.message}`);
  }
}

document.onclick = () => {
  say("clicked");
  if (!track) {
    share();
    return;
  }
  track.stop();
  document.body.classList.remove("sharing");
  say("stopped");
};
say("loaded");
